// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "support/Pages.h"
#include "support/SettingsFile.h"
#include "support/ViewerProcess.h"

#include <QtTest>

#include <memory>

namespace {

const QString kTabBar = QStringLiteral("qt_tabwidget_tabbar");
const QString kTabs = QStringLiteral("tabWidget");
const QString kPath = QStringLiteral("lineEdit_logPath");
const QString kTime = QStringLiteral("checkBox_insertTimeStamp");
const QString kText = QStringLiteral("checkBox_debugText");
const QString kNav = QStringLiteral("checkBox_debugNav");
const QString kOk = QStringLiteral("pushButton_logOK");
const QString kQuestion = QStringLiteral("QMessageBox");
constexpr int kNvmTab = 1;
constexpr int kLongMs = 60000;

const QByteArray kStored = settingsFile("/data/log", "No", "Yes", "No");

} // namespace

class TestConfigPage : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void settingsLastToTheNextStart();
    void yesToTheQuestionSavesThePathOnly();
    void overlongPathEndsTheProgramAndLeavesTheFile();
    void overlongPathInTheFileEndsTheProgram();
    void longestPathLasts();

private:
    void start()
    {
        viewer = std::make_unique<ViewerProcess>(QSize(800, 480), root->path());
        QVERIFY2(viewer->start(), qPrintable(viewer->errorText()));
        QVERIFY(viewer->showPage(Pages::kConfigButton, Pages::kConfig));
    }
    QByteArray stored() const
    {
        QFile file(root->filePath("etc/config.xml"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    bool press(const QString &name) const { return viewer->press(Pages::kConfig, name); }
    bool isChecked(const QString &box) const
    {
        return viewer->property(Pages::kConfig, box, "checked").toBool();
    }
    QString path() const { return viewer->text(Pages::kConfig, kPath); }

    std::unique_ptr<QTemporaryDir> root;
    std::unique_ptr<ViewerProcess> viewer;
};

void TestConfigPage::init()
{
    root = std::make_unique<QTemporaryDir>();
    QVERIFY(writeSettings(root->path(), kStored));
}

void TestConfigPage::cleanup()
{
    if (QTest::currentTestFailed() && viewer)
        qInfo("%s", qPrintable(viewer->standardError().right(2000)));
    viewer.reset();
}

void TestConfigPage::settingsLastToTheNextStart()
{
    start();
    QCOMPARE(path(), QString("/data/log"));
    QVERIFY(!isChecked(kTime) && isChecked(kText) && !isChecked(kNav));
    QVERIFY(viewer->enterText(Pages::kConfig, kPath, "/media/stick"));
    QTRY_COMPARE_WITH_TIMEOUT(path(), QString("/media/stick"), kLongMs);
    for (const QString &box : {kTime, kText, kNav})
        QVERIFY(press(box));
    QTRY_VERIFY_WITH_TIMEOUT(isChecked(kTime) && !isChecked(kText) && isChecked(kNav), kLongMs);
    QCOMPARE(stored(), kStored);
    QVERIFY(press(kOk));
    QTRY_COMPARE_WITH_TIMEOUT(stored(), settingsFile("/media/stick", "Yes", "No", "Yes"), kLongMs);

    QVERIFY(viewer->pressMain(Pages::kExitButton));
    QVERIFY(viewer->waitForEnd(kLongMs));
    start();
    QCOMPARE(path(), QString("/media/stick"));
    QVERIFY(isChecked(kTime) && !isChecked(kText) && isChecked(kNav));
}

void TestConfigPage::yesToTheQuestionSavesThePathOnly()
{
    start();
    QVERIFY(press(kTime));
    QVERIFY(viewer->enterText(Pages::kConfig, kPath, "/else"));
    QTRY_COMPARE_WITH_TIMEOUT(path(), QString("/else"), kLongMs);
    QVERIFY(press(kTabBar)); // its middle is the tab in the middle
    QTRY_VERIFY_WITH_TIMEOUT(viewer->isShown(kQuestion), kLongMs);
    QCOMPARE(viewer->text(kQuestion, {}), QString("Save changes?"));
    QCOMPARE(viewer->property(Pages::kConfig, kTabs, "currentIndex").toInt(), 0);
    QCOMPARE(viewer->text(kQuestion, "QPushButton"), QString("&Yes"));
    QVERIFY(viewer->press(kQuestion, "QPushButton"));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->property(Pages::kConfig, kTabs, "currentIndex").toInt(),
                              kNvmTab, kLongMs);
    QCOMPARE(stored(), settingsFile("/else", "No", "Yes", "No"));
    QVERIFY(
        viewer->screen().click(viewer->rect(Pages::kConfig, kTabBar).topLeft() + QPoint(20, 20)));
    QTRY_COMPARE_WITH_TIMEOUT(viewer->property(Pages::kConfig, kTabs, "currentIndex").toInt(), 0,
                              kLongMs);
    QVERIFY(isChecked(kTime));
}

void TestConfigPage::overlongPathEndsTheProgramAndLeavesTheFile()
{
    start();
    QVERIFY(viewer->enterText(Pages::kConfig, kPath, QString(512, 'x')));
    QTRY_COMPARE_WITH_TIMEOUT(path(), QString(512, 'x'), kLongMs);
    QVERIFY(press(kOk));
    QVERIFY(viewer->waitForEnd(kLongMs));
    QCOMPARE(viewer->exitCode(), 1);
    QVERIFY(viewer->standardError().contains("Error: the log directory takes at most 511 bytes"));
    QCOMPARE(stored(), kStored);
}

void TestConfigPage::overlongPathInTheFileEndsTheProgram()
{
    QVERIFY(writeSettings(root->path(), settingsFile(QByteArray(512, 'x'))));
    viewer = std::make_unique<ViewerProcess>(QSize(800, 480), root->path());
    QVERIFY(!viewer->start());
    QVERIFY(viewer->waitForEnd(kLongMs));
    QCOMPARE(viewer->exitCode(), 1);
    QVERIFY(viewer->standardError().contains("Error: the log directory takes at most 511 bytes"));
}

void TestConfigPage::longestPathLasts()
{
    const QString longest(511, 'x');
    start();
    QVERIFY(viewer->enterText(Pages::kConfig, kPath, longest));
    QTRY_COMPARE_WITH_TIMEOUT(path(), longest, kLongMs);
    QVERIFY(press(kOk));
    QTRY_COMPARE_WITH_TIMEOUT(stored(), settingsFile(longest.toLatin1(), "No", "Yes", "No"),
                              kLongMs);
    viewer->process().kill();
    QVERIFY(viewer->waitForEnd(kLongMs));
    start();
    QCOMPARE(path(), longest);
}

QTEST_GUILESS_MAIN(TestConfigPage)
#include "TestConfigPage.moc"
