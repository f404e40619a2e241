// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/msgDialog.h"
#include "support/Child.h"
#include "support/MessageLog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

class TestMsgDialog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void looksAsAgreed_data();
    void looksAsAgreed();
    void childrenStandInTheirOrder();
    void dialogItself();
    void textIsLargeAndNotBold();
    void buttonBoxShowsAbortInTheMiddle();
    void callerSetsTheText();
    void clickingAbortClosesWithZero();
    void clickingXLeavesTheDialogOpen();
    void escapeClosesWithZero();
    void anyButtonEndsTheDialog();
    void runsModally();
    void slotsAreAsAgreed();

private:
    template<typename T>
    T *child(const char *name = nullptr) const
    {
        return childOf<T>(*dialog, name);
    }
    QPushButton *abortButton() const
    {
        return child<QDialogButtonBox>()->button(QDialogButtonBox::Abort);
    }

    std::unique_ptr<MessageLog> log;
    std::unique_ptr<msgDialog> dialog;
};

void TestMsgDialog::init()
{
    log = std::make_unique<MessageLog>();
    dialog = std::make_unique<msgDialog>();
}

void TestMsgDialog::cleanup()
{
    dialog.reset();
    QStringList warnings = log->warnings();
    log.reset();
    warnings.removeAll("This plugin does not support propagateSizeHints()");
    QCOMPARE(warnings, QStringList());
}

void TestMsgDialog::looksAsAgreed_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("geometry");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("styleSheet");
    QTest::newRow("dialog") << "" << QRect(0, 0, 580, 161) << "Dialog"
                            << "border-style: outset;\nborder-width: 2px;\nborder-radius: 10px;\n"
                               "border-color: beige;\nfont: bold 14px;\n"
                               "background-color: rgb(141, 189,255);\nfont: 20pt \"Sans Serif\";";
    QTest::newRow("button box") << "buttonBox" << QRect(0, 100, 581, 51) << ""
                                << "border-color:blue; border-radius:3px";
    QTest::newRow("text") << "Text" << QRect(50, 20, 521, 71) << "TextLabel"
                          << "border-style: none;\n\n";
    QTest::newRow("close mark") << "pushButton" << QRect(10, 20, 30, 30) << "X"
                                << "background-color: red;\ncolor: white;\nborder-radius: 15px;\n"
                                   "border-color: red";
}

void TestMsgDialog::looksAsAgreed()
{
    QFETCH(QString, name);
    QFETCH(QRect, geometry);
    QFETCH(QString, text);
    QFETCH(QString, styleSheet);
    const QWidget *const widget =
        name.isEmpty() ? dialog.get() : child<QWidget>(name.toLatin1().constData());
    QCOMPARE(widget->geometry(), geometry);
    QCOMPARE(widget->styleSheet(), styleSheet);
    const QString shown =
        widget->isWindow() ? widget->windowTitle() : widget->property("text").toString();
    QCOMPARE(shown, text);
}

void TestMsgDialog::childrenStandInTheirOrder()
{
    QStringList names;
    const auto children = dialog->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (const QWidget *widget : children)
        names << widget->objectName() + QLatin1Char(' ') + widget->metaObject()->className();
    QCOMPARE(names,
             QStringList({"buttonBox QDialogButtonBox", "Text QLabel", "pushButton QPushButton"}));
}

void TestMsgDialog::dialogItself()
{
    QCOMPARE(dialog->objectName(), QString("msgDialog"));
    QCOMPARE(dialog->windowFlags(), QDialog().windowFlags());
    QWidget parent;
    const msgDialog other(&parent);
    QCOMPARE(other.parentWidget(), &parent);
}

// Of the two fonts in the style sheet the later one wins.
void TestMsgDialog::textIsLargeAndNotBold()
{
    dialog->show();
    for (const QWidget *widget : {static_cast<QWidget *>(dialog.get()), child<QWidget>("Text")}) {
        QCOMPARE(widget->font().pointSize(), 20);
        QVERIFY(!widget->font().bold());
        QCOMPARE(widget->font().family(), QString("Sans Serif"));
    }
}

void TestMsgDialog::buttonBoxShowsAbortInTheMiddle()
{
    const auto *const box = child<QDialogButtonBox>("buttonBox");
    QCOMPARE(box->orientation(), Qt::Horizontal);
    QCOMPARE(box->standardButtons(), QDialogButtonBox::StandardButtons(QDialogButtonBox::Abort));
    QVERIFY(box->centerButtons());
    dialog->show();
    QVERIFY(qAbs(abortButton()->geometry().center().x() - box->rect().center().x()) <= 1);
}

void TestMsgDialog::callerSetsTheText()
{
    dialog->setText("No receiver");
    QCOMPARE(child<QLabel>("Text")->text(), QString("No receiver"));
}

void TestMsgDialog::clickingAbortClosesWithZero()
{
    const QSignalSpy finished(dialog.get(), &QDialog::finished);
    const QSignalSpy rejected(dialog.get(), &QDialog::rejected);
    dialog->setResult(QDialog::Accepted);
    dialog->show();
    QTest::mouseClick(abortButton(), Qt::LeftButton);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), 0);
    QVERIFY(finished.count() > 0);
    QCOMPARE(finished.first().first().toInt(), 0);
    QVERIFY(rejected.count() > 0);
}

void TestMsgDialog::clickingXLeavesTheDialogOpen()
{
    const QSignalSpy finished(dialog.get(), &QDialog::finished);
    dialog->show();
    QTest::mouseClick(child<QPushButton>("pushButton"), Qt::LeftButton);
    QVERIFY(dialog->isVisible());
    QCOMPARE(finished.count(), 0);
}

void TestMsgDialog::escapeClosesWithZero()
{
    const QSignalSpy rejected(dialog.get(), &QDialog::rejected);
    dialog->setResult(QDialog::Accepted);
    dialog->show();
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), 0);
    QCOMPARE(rejected.count(), 1);
}

// Also one that a caller added to accept: its click comes before the acceptance.
void TestMsgDialog::anyButtonEndsTheDialog()
{
    QPushButton *const ok = child<QDialogButtonBox>()->addButton(QDialogButtonBox::Ok);
    const QSignalSpy finished(dialog.get(), &QDialog::finished);
    dialog->show();
    QTest::mouseClick(ok, Qt::LeftButton);
    QVERIFY(!dialog->isVisible());
    QCOMPARE(finished.first().first().toInt(), 0);
}

void TestMsgDialog::runsModally()
{
    bool wasModal = false;
    QTimer::singleShot(0, dialog.get(), [&] {
        wasModal = dialog->isModal();
        abortButton()->click();
    });
    QCOMPARE(dialog->exec(), 0);
    QVERIFY(wasModal);
}

void TestMsgDialog::slotsAreAsAgreed()
{
    const QMetaObject &meta = msgDialog::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(),
             QByteArray("bt_clicked(QAbstractButton*)"));
    QCOMPARE(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Slot);
}

QTEST_MAIN(TestMsgDialog)
#include "TestMsgDialog.moc"
