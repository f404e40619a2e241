// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/TouchStyle.h"
#include "config/ConfigView.h"

#include "config/ConfigFile.h"
#include "support/Child.h"
#include "support/CommandPipeReader.h"
#include "support/MessageLog.h"
#include "support/SelfProcess.h"
#include "support/SettingsFile.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMetaMethod>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTimer>
#include <QtTest>

#include <cstring>
#include <functional>
#include <memory>

namespace {

constexpr int kLogTab = 0;
constexpr int kNvmTab = 1;
constexpr int kAboutTab = 2;
constexpr int kBesideTheTabs = -1;
constexpr auto kSaveArgument = "--save-path-of-length";
const QByteArray kCommandTrace = "NVM Store now: $PPLMT,0\r\n";

const QByteArray kStored = settingsFile("/data/log", "No", "Yes", "No");

void edit(QLineEdit *line, const QString &text)
{
    line->selectAll();
    QTest::keyClicks(line, text);
}

/// Does `answer` to the modal dialog that the next press opens, and counts those dialogs.
template<typename Dialog>
class Answer : public QObject
{
public:
    explicit Answer(std::function<void(Dialog *)> answer)
        : act(std::move(answer))
    {
        timer.start(5);
        connect(&timer, &QTimer::timeout, this, [this] {
            auto *const dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!dialog || dialog == last)
                return;
            last = dialog;
            ++count;
            act(dialog);
        });
    }

    int count = 0;

private:
    std::function<void(Dialog *)> act;
    QTimer timer;
    Dialog *last = nullptr;
};

class Question : public Answer<QMessageBox>
{
public:
    explicit Question(QMessageBox::StandardButton button)
        : Answer([this, button](QMessageBox *box) {
            title = box->windowTitle();
            text = box->text();
            buttons = box->standardButtons();
            parent = box->parentWidget();
            defaultButton = box->defaultButton();
            QTest::mouseClick(box->button(button), Qt::LeftButton);
        })
    {
    }

    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    QWidget *parent = nullptr;
    QPushButton *defaultButton = nullptr;
};

/// Puts the process into a locale of another encoding while it lives.
class LocalEncoding
{
public:
    explicit LocalEncoding(const char *name)
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(name));
    }
    ~LocalEncoding() { QTextCodec::setCodecForLocale(previous); }
    Q_DISABLE_COPY(LocalEncoding)

private:
    QTextCodec *previous = QTextCodec::codecForLocale();
};

/// Work of a child process, which the save may end.
int childMain(const char *configFile, int length)
{
    ConfigFile::instance()->read(configFile);
    const ConfigView page;
    childOf<QLineEdit>(page, "lineEdit_logPath")->setText(QString(length, 'x'));
    childOf<QCheckBox>(page, "checkBox_debugText")->click();
    childOf<QPushButton>(page, "pushButton_logOK")->click();
    return 0;
}

} // namespace

class TestConfigView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
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
    void slotsHaveTheirAgreedOrder();
    void tickABoxAndPressOkWritesAllThreeBoxesAndThePath();
    void okWithoutAnyEditWritesNothing();
    void okSavesOnce();
    void everyEditCounts_data();
    void everyEditCounts();
    void cancelShowsTheSettingsAgain();
    void yesOnLeavingTheTabSavesThePathOnly();
    void insertSystemTimeTickedThenAboutThenYesLeavesDisplayTimeUnchanged();
    void selectedTabAsksNothing_data();
    void selectedTabAsksNothing();
    void noThenOkSavesNothing();
    void pressBesideTheTabsAsks();
    void anotherTabWithoutAnEditAsksNothing();
    void closedQuestionIsANo();
    void chooserPutsTheFolderIntoThePathLine();
    void cancelledChooserChangesNothing();
    void chosenFolderWithAControlCharacterIsReadBack();
    void reloadsAtTabFiveOnly_data();
    void reloadsAtTabFiveOnly();
    void savedPathIsInTheLocalEncoding_data();
    void savedPathIsInTheLocalEncoding();
    void failedSaveKeepsTheNewSettingsInMemory();
    void savedPathIsBounded_data();
    void savedPathIsBounded();
    void nvmStoreSendsItsCommand();
    void nvmStoreWithoutAPipeIsTraced();
    void changesettingIsSilent();

private:
    template<typename T>
    T *child(const char *name) const
    {
        return childOf<T>(*page, name);
    }
    void press(const char *button) const
    {
        QTest::mouseClick(child<QPushButton>(button), Qt::LeftButton);
    }
    void pressTab(int index) const
    {
        QTabBar *bar = child<QTabWidget>("tabWidget")->tabBar();
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
    }
    void makePage()
    {
        page = std::make_unique<ConfigView>();
        page->resize(617, 455);
        page->show();
        QVERIFY(QTest::qWaitForWindowExposed(page.get()));
    }
    QByteArray stored() const
    {
        QFile file(root.filePath("config.xml"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    QTemporaryDir root;
    QByteArray configPath;
    std::unique_ptr<ConfigView> page;
    ConfigSettings *settings = ConfigFile::instance()->settings();
};

void TestConfigView::initTestCase()
{
    // What the program sets for all its pages.
    TouchStyle::apply({800, 480});
    qApp->setStyleSheet("QGroupBox {  border: 1px solid gray; border-radius: 5px; }");
}

void TestConfigView::init()
{
    qputenv("TAVRIN_ROOT", QFile::encodeName(root.path()));
    configPath = QFile::encodeName(root.filePath("config.xml"));
    QFile file(root.filePath("config.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(kStored), qint64(kStored.size()));
    file.close();
    QVERIFY(ConfigFile::instance()->read(configPath.constData()));
    *settings = ConfigSettings();
}

void TestConfigView::cleanup()
{
    page.reset();
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
    makePage();
    const auto *widget = page->findChild<QWidget *>(name);
    QVERIFY(widget);
    QCOMPARE(QByteArray(widget->metaObject()->className()), kind);
    QTEST(widget->property("text").toString(), "text");
    const auto *tabs = page->findChild<QTabWidget *>("tabWidget");
    QVERIFY(tabs->widget(tab)->isAncestorOf(widget));
}

void TestConfigView::hasTheTabs()
{
    makePage();
    QCOMPARE(page->objectName(), QString("ConfigView"));
    QCOMPARE(page->windowTitle(), QString("Form"));
    QLayout *layout = page->findChild<QHBoxLayout *>("horizontalLayout");
    QCOMPARE(page->layout(), layout);
    auto *tabs = page->findChild<QTabWidget *>("tabWidget");
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
    makePage();
    QCOMPARE(page->findChild<QLineEdit *>("lineEdit_logPath")->text(),
             QString::fromLocal8Bit(directory.toLocal8Bit()));
    QCOMPARE(page->findChild<QCheckBox *>("checkBox_insertTimeStamp")->isChecked(), displayTime);
    QCOMPARE(page->findChild<QCheckBox *>("checkBox_debugText")->isChecked(), textDebug);
    QCOMPARE(page->findChild<QCheckBox *>("checkBox_debugNav")->isChecked(), navDebug);
}

void TestConfigView::leavesTheSettingsAlone()
{
    makePage();
    page->findChild<QCheckBox *>("checkBox_debugText")->click();
    page->findChild<QLineEdit *>("lineEdit_logPath")->setText("/else");
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
    makePage();
    QVERIFY(page->minimumSizeHint().width() <= 600);
    QVERIFY(page->minimumSizeHint().height() <= 440);
    page->resize(size);
    QCOMPARE(page->size(), size);
    auto *tabs = page->findChild<QTabWidget *>("tabWidget");
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
    makePage();
    auto *tabs = page->findChild<QTabWidget *>("tabWidget");
    QVERIFY(tabs->tabBar()->tabRect(1).height() >= 40);
    for (int i = 0; i < tabs->count(); ++i) {
        tabs->setCurrentIndex(i);
        QCoreApplication::processEvents();
        const auto buttons = tabs->currentWidget()->findChildren<QAbstractButton *>();
        for (const QAbstractButton *button : buttons)
            QVERIFY2(button->height() >= 40, qPrintable(button->objectName()));
    }
    QVERIFY(page->findChild<QLineEdit *>("lineEdit_logPath")->height() >= 40);
}

void TestConfigView::slotsHaveTheirAgreedOrder()
{
    const QMetaObject &meta = ConfigView::staticMetaObject;
    QByteArrayList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << meta.method(i).methodSignature();
    const QByteArrayList expected = {"on_pushButton_logOK_clicked()",
                                     "on_pushButton_logCancel_clicked()",
                                     "on_pushButton_logPathOpen_clicked()",
                                     "on_pushButton_nvmStore_clicked()",
                                     "on_tabWidget_currentChanged(int)",
                                     "on_tabWidget_tabBarClicked(int)",
                                     "on_lineEdit_logPath_textEdited(QString)",
                                     "on_checkBox_insertTimeStamp_clicked()",
                                     "on_checkBox_debugText_clicked()",
                                     "on_checkBox_debugNav_clicked()",
                                     "changesetting(bool)"};
    QCOMPARE(names, expected);
}

void TestConfigView::tickABoxAndPressOkWritesAllThreeBoxesAndThePath()
{
    ConfigFile::instance()->read(configPath.constData());
    makePage();
    child<QCheckBox>("checkBox_insertTimeStamp")->click();
    // Not edited by a user, yet taken over with the rest.
    child<QCheckBox>("checkBox_debugText")->setChecked(false);
    child<QCheckBox>("checkBox_debugNav")->setChecked(true);
    child<QLineEdit>("lineEdit_logPath")->setText("/else");
    QCOMPARE(stored(), kStored);
    press("pushButton_logOK");
    QCOMPARE(stored(), settingsFile("/else", "Yes", "No", "Yes"));
    QCOMPARE(settings->directory, "/else");
    QVERIFY(settings->displayTime && !settings->textDebug && settings->navDebug);
}

void TestConfigView::okWithoutAnyEditWritesNothing()
{
    makePage();
    child<QCheckBox>("checkBox_debugNav")->setChecked(true);
    child<QLineEdit>("lineEdit_logPath")->setText("/else");
    QVERIFY(QFile::remove(root.filePath("config.xml")));
    press("pushButton_logOK");
    QCOMPARE(stored(), QByteArray("no file"));
    QCOMPARE(settings->directory, "");
    QVERIFY(!settings->navDebug);
}

void TestConfigView::okSavesOnce()
{
    makePage();
    child<QCheckBox>("checkBox_debugNav")->click();
    press("pushButton_logOK");
    QVERIFY(QFile::remove(root.filePath("config.xml")));
    press("pushButton_logOK");
    QCOMPARE(stored(), QByteArray("no file"));
}

void TestConfigView::everyEditCounts_data()
{
    QTest::addColumn<QByteArray>("widget");
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("path") << QByteArray("lineEdit_logPath") << settingsFile("/x", "No", "No", "No");
    QTest::newRow("time") << QByteArray("checkBox_insertTimeStamp")
                          << settingsFile("", "Yes", "No", "No");
    QTest::newRow("text") << QByteArray("checkBox_debugText")
                          << settingsFile("", "No", "Yes", "No");
    QTest::newRow("nav") << QByteArray("checkBox_debugNav") << settingsFile("", "No", "No", "Yes");
}

void TestConfigView::everyEditCounts()
{
    QFETCH(QByteArray, widget);
    makePage();
    auto *const edited = child<QWidget>(widget.constData());
    if (auto *const box = qobject_cast<QCheckBox *>(edited))
        box->click();
    else
        edit(qobject_cast<QLineEdit *>(edited), "/x");
    press("pushButton_logOK");
    QTEST(stored(), "file");
}

void TestConfigView::cancelShowsTheSettingsAgain()
{
    ConfigFile::instance()->read(configPath.constData());
    makePage();
    child<QCheckBox>("checkBox_insertTimeStamp")->click();
    child<QCheckBox>("checkBox_debugText")->click();
    child<QCheckBox>("checkBox_debugNav")->click();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    press("pushButton_logCancel");
    QVERIFY(!child<QCheckBox>("checkBox_insertTimeStamp")->isChecked());
    QVERIFY(child<QCheckBox>("checkBox_debugText")->isChecked());
    QVERIFY(!child<QCheckBox>("checkBox_debugNav")->isChecked());
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), QString("/data/log"));
    QVERIFY(QFile::remove(root.filePath("config.xml")));
    press("pushButton_logOK"); // nothing is edited any more
    QCOMPARE(stored(), QByteArray("no file"));
}

void TestConfigView::yesOnLeavingTheTabSavesThePathOnly()
{
    makePage();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    child<QCheckBox>("checkBox_debugText")->click();
    Question question(QMessageBox::Yes);
    pressTab(kNvmTab);
    QCOMPARE(question.count, 1);
    QCOMPARE(question.title, QString("Configuration changed"));
    QCOMPARE(question.text, QString("Save changes?"));
    QCOMPARE(question.buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(question.parent, page.get());
    QVERIFY(!question.defaultButton);
    QCOMPARE(stored(), settingsFile("/else", "No", "No", "No"));
    QVERIFY(!settings->textDebug);
    QCOMPARE(child<QTabWidget>("tabWidget")->currentIndex(), kNvmTab);
}

void TestConfigView::insertSystemTimeTickedThenAboutThenYesLeavesDisplayTimeUnchanged()
{
    ConfigFile::instance()->read(configPath.constData());
    makePage();
    auto *const box = child<QCheckBox>("checkBox_insertTimeStamp");
    box->click();
    Question question(QMessageBox::Yes);
    pressTab(kAboutTab);
    QCOMPARE(question.count, 1);
    QCOMPARE(stored(), kStored);
    QVERIFY(!settings->displayTime);
    QVERIFY(box->isChecked());
}

void TestConfigView::selectedTabAsksNothing_data()
{
    QTest::addColumn<bool>("leaveFirst");
    QTest::newRow("edit the path, click the already selected Log tab") << false;
    QTest::newRow("after having been on another tab") << true;
}

void TestConfigView::selectedTabAsksNothing()
{
    QFETCH(bool, leaveFirst);
    makePage();
    if (leaveFirst) {
        pressTab(kAboutTab);
        pressTab(kLogTab);
    }
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    const Question question(QMessageBox::Yes);
    pressTab(kLogTab);
    QCoreApplication::processEvents();
    QCOMPARE(question.count, 0);
    QCOMPARE(stored(), kStored);
    press("pushButton_logOK"); // and the edit is still one
    QCOMPARE(stored(), settingsFile("/else", "No", "No", "No"));
}

void TestConfigView::noThenOkSavesNothing()
{
    makePage();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    Question question(QMessageBox::No);
    pressTab(kAboutTab);
    pressTab(kLogTab);
    QCOMPARE(question.count, 1);
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), QString("/else"));
    press("pushButton_logOK");
    QCOMPARE(stored(), kStored);
    QCOMPARE(settings->directory, "");
}

void TestConfigView::pressBesideTheTabsAsks()
{
    makePage();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    Question question(QMessageBox::Yes);
    // Where the tab bar is as long as its tabs nothing is beside them; where it is longer, a press
    // there reports this.
    emit child<QTabWidget>("tabWidget")->tabBarClicked(kBesideTheTabs);
    QCOMPARE(question.count, 1);
    QCOMPARE(stored(), settingsFile("/else", "No", "No", "No"));
    QCOMPARE(child<QTabWidget>("tabWidget")->currentIndex(), kLogTab);
}

void TestConfigView::anotherTabWithoutAnEditAsksNothing()
{
    makePage();
    const Question question(QMessageBox::Yes);
    for (const int tab : {kNvmTab, kAboutTab, kLogTab})
        pressTab(tab);
    QCoreApplication::processEvents();
    QCOMPARE(question.count, 0);
    QCOMPARE(stored(), kStored);
}

void TestConfigView::closedQuestionIsANo()
{
    makePage();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    const Answer<QMessageBox> escape(
        [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); });
    pressTab(kAboutTab);
    QCOMPARE(escape.count, 1);
    QCOMPARE(stored(), kStored);
    QCOMPARE(child<QTabWidget>("tabWidget")->currentIndex(), kAboutTab);
}

void TestConfigView::chooserPutsTheFolderIntoThePathLine()
{
    QVERIFY(QDir(root.path()).mkpath("logs/here"));
    ConfigFile::instance()->setDirectory(QFile::encodeName(root.filePath("logs")).constData());
    makePage();
    QString title;
    QString startFolder;
    const QWidget *parent = nullptr;
    bool foldersOnly = false;
    const Answer<QFileDialog> choose([&](QFileDialog *dialog) {
        title = dialog->windowTitle();
        startFolder = dialog->directory().path();
        parent = dialog->parentWidget();
        foldersOnly = dialog->testOption(QFileDialog::ShowDirsOnly);
        dialog->selectFile(root.filePath("logs/here"));
        QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    });
    press("pushButton_logPathOpen");
    QCOMPARE(choose.count, 1);
    QCOMPARE(title, QString("Find Files"));
    QCOMPARE(startFolder, root.filePath("logs"));
    QCOMPARE(parent, page.get());
    QVERIFY(foldersOnly);
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), root.filePath("logs/here"));
    QCOMPARE(stored(), kStored);
    press("pushButton_logOK");
    QCOMPARE(stored(),
             settingsFile(QFile::encodeName(root.filePath("logs/here")), "No", "No", "No"));
}

void TestConfigView::cancelledChooserChangesNothing()
{
    ConfigFile::instance()->setDirectory("/data/log");
    makePage();
    const Answer<QFileDialog> cancel([](QFileDialog *dialog) { dialog->reject(); });
    press("pushButton_logPathOpen");
    QCOMPARE(cancel.count, 1);
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), QString("/data/log"));
    QVERIFY(QFile::remove(root.filePath("config.xml")));
    press("pushButton_logOK");
    QCOMPARE(stored(), QByteArray("no file"));
}

void TestConfigView::chosenFolderWithAControlCharacterIsReadBack()
{
    const QString folder = root.filePath("a\x01"
                                         "b");
    QVERIFY(QDir(root.path()).mkpath(folder));
    ConfigFile::instance()->setDirectory(QFile::encodeName(root.path()).constData());
    settings->navDebug = true;
    makePage();
    const Answer<QFileDialog> choose([&folder](QFileDialog *dialog) {
        dialog->selectFile(folder);
        QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
    });
    press("pushButton_logPathOpen");
    QCOMPARE(choose.count, 1);
    press("pushButton_logOK");
    *settings = ConfigSettings();
    QVERIFY(ConfigFile::instance()->read(configPath.constData()));
    QCOMPARE(QFile::decodeName(settings->directory), folder);
    QVERIFY(settings->navDebug);
}

void TestConfigView::reloadsAtTabFiveOnly_data()
{
    QTest::addColumn<bool>("reloads");
    for (int index = -1; index < 8; ++index)
        QTest::newRow(qPrintable(QString::number(index))) << (index == 5);
}

void TestConfigView::reloadsAtTabFiveOnly()
{
    ConfigFile::instance()->read(configPath.constData());
    makePage();
    child<QLineEdit>("lineEdit_logPath")->setText("/else");
    page->on_tabWidget_currentChanged(QByteArray(QTest::currentDataTag()).toInt());
    QFETCH(bool, reloads);
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), reloads ? "/data/log" : "/else");
}

void TestConfigView::savedPathIsInTheLocalEncoding_data()
{
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("directory");
    QTest::addColumn<bool>("byQuestion");
    for (const bool byQuestion : {false, true}) {
        const QByteArray way = byQuestion ? ", by Yes" : ", by OK";
        QTest::newRow(("UTF-8" + way).constData()) << QByteArray("UTF-8")
                                                   << QByteArray("/gr\xc3\xbc\xc3\x9f"
                                                                 "e")
                                                   << byQuestion;
        QTest::newRow(("ISO-8859-1" + way).constData()) << QByteArray("ISO-8859-1")
                                                        << QByteArray("/gr\xfc\xdf"
                                                                      "e")
                                                        << byQuestion;
        QTest::newRow(("IBM850" + way).constData()) << QByteArray("IBM850")
                                                    << QByteArray("/gr\x81\xe1"
                                                                  "e")
                                                    << byQuestion;
    }
}

void TestConfigView::savedPathIsInTheLocalEncoding()
{
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, directory);
    QFETCH(bool, byQuestion);
    const LocalEncoding local(encoding.constData());
    makePage();
    const QString path = QString::fromUtf8("/gr\u00FC\u00DFe");
    auto *const line = child<QLineEdit>("lineEdit_logPath");
    line->setText(path + 'x'); // QTest types ASCII only
    QTest::keyClick(line, Qt::Key_Backspace);
    const Question question(QMessageBox::Yes);
    if (byQuestion)
        pressTab(kAboutTab);
    else
        press("pushButton_logOK");
    QCOMPARE(question.count, byQuestion ? 1 : 0);
    QCOMPARE(QByteArray(settings->directory), directory);
    // The file itself is always UTF-8.
    QCOMPARE(stored(), settingsFile(path.toUtf8(), "No", "No", "No"));
    makePage();
    QCOMPARE(child<QLineEdit>("lineEdit_logPath")->text(), path);
}

void TestConfigView::failedSaveKeepsTheNewSettingsInMemory()
{
    const QByteArray path = QFile::encodeName(root.filePath("none/config.xml"));
    ConfigFile::instance()->read(path.constData());
    makePage();
    edit(child<QLineEdit>("lineEdit_logPath"), "/else");
    press("pushButton_logOK");
    QCOMPARE(settings->directory, "/else");
    ConfigFile::instance()->read(configPath.constData());
    *settings = ConfigSettings();
    press("pushButton_logOK"); // the edit counts as saved
    QCOMPARE(stored(), kStored);
}

void TestConfigView::savedPathIsBounded_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("fits");
    QTest::newRow("511 bytes and NUL fit") << 511 << true;
    QTest::newRow("512 bytes end the process") << 512 << false;
}

void TestConfigView::savedPathIsBounded()
{
    QFETCH(int, length);
    QFETCH(bool, fits);
    const ChildResult child =
        runSelf({kSaveArgument, root.filePath("config.xml"), QString::number(length)});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, fits ? 0 : 1);
    QCOMPARE(stored(), fits ? settingsFile(QByteArray(length, 'x'), "No", "No", "No") : kStored);
    QCOMPARE(child.error.contains("Error: the log directory takes at most 511 bytes"), !fits);
}

void TestConfigView::nvmStoreSendsItsCommand()
{
    QVERIFY(QDir(root.path()).mkpath("tmp"));
    CommandPipeReader reader(QFile::encodeName(root.filePath("tmp/agiout")));
    makePage();
    pressTab(kNvmTab);
    const MessageLog trace;
    press("pushButton_nvmStore");
    QTRY_COMPARE(reader.sentences(), QByteArrayList{"$PPLMT,0\r\n"});
    QCOMPARE(trace.lines(), QStringList{"d> NVM Store: " + kCommandTrace});
}

void TestConfigView::nvmStoreWithoutAPipeIsTraced()
{
    qputenv("TAVRIN_ROOT", QFile::encodeName(root.filePath("none")));
    makePage();
    const MessageLog trace;
    press("pushButton_nvmStore");
    QCOMPARE(trace.lines(), QStringList{"E> NVM Store: File (" + root.filePath("none/tmp/agiout") +
                                        "): No such file or directory"});
}

void TestConfigView::changesettingIsSilent()
{
    makePage();
    const MessageLog trace;
    page->changesetting(true);
    QVERIFY(trace.messages().empty());
}

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    if (argc > 3 && std::strcmp(argv[1], kSaveArgument) == 0)
        return childMain(argv[2], std::atoi(argv[3]));
    TestConfigView test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestConfigView.moc"
