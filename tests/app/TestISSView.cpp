// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/ISSView.h"
#include "config/ConfigView.h"
#include "control/ControlView.h"
#include "control/TTFFTester.h"
#include "views/SVView.h"

#include <QtTest>

#include <type_traits>

class TestISSView : public QObject
{
    Q_OBJECT

private slots:
    void isAnOrdinaryWidgetOfItsParent();
    void hasNoMetaObjectOfItsOwn();
    void isTheBaseOfThePagesButNotOfTheTester();
    void refreshViewIsAHookThatDoesNothing();
};

void TestISSView::isAnOrdinaryWidgetOfItsParent()
{
    const ISSView window;
    QCOMPARE(window.parentWidget(), nullptr);
    QCOMPARE(window.windowFlags(), QWidget().windowFlags());
    QWidget parent;
    const ISSView page(&parent);
    QCOMPARE(page.parentWidget(), &parent);
    QCOMPARE(page.windowFlags(), QWidget(&parent).windowFlags());
}

void TestISSView::hasNoMetaObjectOfItsOwn()
{
    QCOMPARE(ISSView().metaObject(), &QWidget::staticMetaObject);
}

void TestISSView::isTheBaseOfThePagesButNotOfTheTester()
{
    QVERIFY((std::is_base_of_v<ISSView, ControlView>));
    QVERIFY((std::is_base_of_v<ISSView, SVView>));
    QVERIFY((std::is_base_of_v<ISSView, ConfigView>));
    QVERIFY(!(std::is_base_of_v<ISSView, TTFFTester>));
}

void TestISSView::refreshViewIsAHookThatDoesNothing()
{
    class Page : public ISSView
    {
    public:
        void refreshView() override { ++calls; }
        int calls = 0;
    };

    ISSView plain;
    plain.refreshView();
    QVERIFY(!plain.isVisible());

    Page page;
    page.show();
    page.update();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    QCOMPARE(page.calls, 0); // showing and painting do not call it
    static_cast<ISSView &>(page).refreshView();
    QCOMPARE(page.calls, 1);
}

QTEST_MAIN(TestISSView)
#include "TestISSView.moc"
