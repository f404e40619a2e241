// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigView.h"

#include "config/ConfigFile.h"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

class TestConfigView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void hasTheForm_data();
    void hasTheForm();
    void hasTheTabs();
    void loadsTheSettings_data();
    void loadsTheSettings();
    void leavesTheSettingsAlone();
    void handsOutASecondPage();
    void fitsThePageArea_data();
    void fitsThePageArea();
    void isMadeForFingers();

private:
    ConfigSettings *settings = ConfigFile::instance()->settings();
};

void TestConfigView::initTestCase()
{
    // What the program sets for all its pages.
    qApp->setStyleSheet("QGroupBox {  border: 1px solid gray; border-radius: 5px; }");
}

void TestConfigView::init()
{
    *settings = ConfigSettings();
}

void TestConfigView::hasTheForm_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("tab");
    QTest::newRow("label") << "label" << QByteArray("QLabel") << "Log directory" << 0;
    QTest::newRow("path") << "lineEdit_logPath" << QByteArray("QLineEdit") << "" << 0;
    QTest::newRow("chooser") << "pushButton_logPathOpen" << QByteArray("QPushButton") << "..." << 0;
    QTest::newRow("label_5") << "label_5" << QByteArray("QLabel") << "Debug Level" << 0;
    QTest::newRow("time stamp") << "checkBox_insertTimeStamp" << QByteArray("QCheckBox")
                                << "Insert System Time" << 0;
    QTest::newRow("text") << "checkBox_debugText" << QByteArray("QCheckBox") << "Text" << 0;
    QTest::newRow("nav") << "checkBox_debugNav" << QByteArray("QCheckBox") << "NAV" << 0;
    QTest::newRow("ok") << "pushButton_logOK" << QByteArray("QPushButton") << "OK" << 0;
    QTest::newRow("cancel") << "pushButton_logCancel" << QByteArray("QPushButton") << "Cancel" << 0;
    QTest::newRow("nvm") << "pushButton_nvmStore" << QByteArray("QPushButton") << "NVM Store" << 1;
    QTest::newRow("version") << "label_version" << QByteArray("QLabel")
                             << "<html><head/><body><p>Version: 2.2.12</p></body></html>" << 2;
}

void TestConfigView::hasTheForm()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, kind);
    QFETCH(int, tab);
    const ConfigView page;
    const auto *widget = page.findChild<QWidget *>(name);
    QVERIFY(widget);
    QCOMPARE(QByteArray(widget->metaObject()->className()), kind);
    QTEST(widget->property("text").toString(), "text");
    const auto *tabs = page.findChild<QTabWidget *>("tabWidget");
    QVERIFY(tabs->widget(tab)->isAncestorOf(widget));
}

void TestConfigView::hasTheTabs()
{
    const ConfigView page;
    QCOMPARE(page.objectName(), QString("ConfigView"));
    QCOMPARE(page.windowTitle(), QString("Form"));
    QLayout *layout = page.findChild<QHBoxLayout *>("horizontalLayout");
    QCOMPARE(page.layout(), layout);
    auto *tabs = page.findChild<QTabWidget *>("tabWidget");
    QCOMPARE(layout->itemAt(0)->widget(), tabs);
    QCOMPARE(tabs->count(), 3);
    QCOMPARE(tabs->currentIndex(), 0);
    QCOMPARE(tabs->tabText(0), QString("Log"));
    QCOMPARE(tabs->tabText(1), QString("NVM"));
    QCOMPARE(tabs->tabText(2), QString("About"));
    QCOMPARE(tabs->widget(0)->objectName(), QString("tab_6"));
    QCOMPARE(tabs->widget(2)->objectName(), QString("tab_7"));
}

void TestConfigView::loadsTheSettings_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<bool>("displayTime");
    QTest::addColumn<bool>("textDebug");
    QTest::addColumn<bool>("navDebug");
    QTest::newRow("as created") << "" << false << false << false;
    QTest::newRow("all") << "/data/log" << true << true << true;
    QTest::newRow("time stamp only") << "/data" << true << false << false;
    QTest::newRow("text only") << "/data" << false << true << false;
    QTest::newRow("nav only") << "/data" << false << false << true;
    QTest::newRow("not ASCII") << QString::fromUtf8("/gr\u00FC\u00DFe") << false << false << false;
    QTest::newRow("longest") << QString(511, 'x') << false << false << false;
}

void TestConfigView::loadsTheSettings()
{
    QFETCH(QString, directory);
    QFETCH(bool, displayTime);
    QFETCH(bool, textDebug);
    QFETCH(bool, navDebug);
    ConfigFile::instance()->setDirectory(directory.toLocal8Bit().constData());
    settings->displayTime = displayTime;
    settings->textDebug = textDebug;
    settings->navDebug = navDebug;
    const ConfigView page;
    QCOMPARE(page.findChild<QLineEdit *>("lineEdit_logPath")->text(),
             QString::fromLocal8Bit(directory.toLocal8Bit()));
    QCOMPARE(page.findChild<QCheckBox *>("checkBox_insertTimeStamp")->isChecked(), displayTime);
    QCOMPARE(page.findChild<QCheckBox *>("checkBox_debugText")->isChecked(), textDebug);
    QCOMPARE(page.findChild<QCheckBox *>("checkBox_debugNav")->isChecked(), navDebug);
}

void TestConfigView::leavesTheSettingsAlone()
{
    const ConfigView page;
    page.findChild<QCheckBox *>("checkBox_debugText")->click();
    page.findChild<QLineEdit *>("lineEdit_logPath")->setText("/else");
    QCOMPARE(settings->directory, "");
    QVERIFY(!settings->textDebug);
}

void TestConfigView::handsOutASecondPage()
{
    QWidget window;
    const ConfigView shown(&window);
    ConfigView *second = ConfigView::instance();
    QVERIFY(second != &shown);
    QCOMPARE(ConfigView::instance(), second);
    QVERIFY(!second->parent());
    QVERIFY(second->isHidden());
    QCOMPARE(shown.parentWidget(), &window);
}

void TestConfigView::fitsThePageArea_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("least") << QSize(600, 440);
    QTest::newRow("on the small screen") << QSize(620, 455);
    QTest::newRow("on the large screen") << QSize(1000, 690);
}

void TestConfigView::fitsThePageArea()
{
    QFETCH(QSize, size);
    ConfigFile::instance()->setDirectory(QByteArray(511, 'x').constData());
    ConfigView page;
    QVERIFY(page.minimumSizeHint().width() <= 600);
    QVERIFY(page.minimumSizeHint().height() <= 440);
    page.resize(size);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    QCOMPARE(page.size(), size);
    auto *tabs = page.findChild<QTabWidget *>("tabWidget");
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
        const QWidget *tab = tabs->currentWidget();
        const auto children = tab->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(!children.isEmpty());
        for (const QWidget *child : children) {
            QVERIFY2(tab->rect().contains(child->geometry()), qPrintable(child->objectName()));
            const QSize least = child->minimumSizeHint();
            QVERIFY2(child->width() >= least.width() && child->height() >= least.height(),
                     qPrintable(child->objectName()));
            for (const QWidget *other : children)
                QVERIFY(other == child || !other->geometry().intersects(child->geometry()));
        }
    }
}

void TestConfigView::isMadeForFingers()
{
    ConfigView page;
    page.resize(620, 455);
    page.show();
    QVERIFY(QTest::qWaitForWindowExposed(&page));
    auto *tabs = page.findChild<QTabWidget *>("tabWidget");
    QVERIFY(tabs->tabBar()->tabRect(1).height() >= 40);
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
        const auto buttons = tabs->currentWidget()->findChildren<QAbstractButton *>();
        for (const QAbstractButton *button : buttons)
            QVERIFY2(button->height() >= 40, qPrintable(button->objectName()));
    }
    QVERIFY(page.findChild<QLineEdit *>("lineEdit_logPath")->height() >= 40);
}

QTEST_MAIN(TestConfigView)
#include "TestConfigView.moc"
