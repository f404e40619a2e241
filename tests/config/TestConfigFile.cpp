// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"

#include "support/SelfProcess.h"
#include "support/SettingsFile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstring>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

constexpr auto kReadArgument = "--read";
constexpr auto kWriteArgument = "--write";
constexpr auto kFullWriteArgument = "--write-without-room";
constexpr auto kSetDirectoryArgument = "--set-directory";

QByteArray logWith(const QByteArray &elements)
{
    return "<configuration><log>" + elements + "</log></configuration>";
}

QByteArray nested(int depth)
{
    QByteArray text = "<configuration><log><displayTime>Yes</displayTime>";
    for (int i = 0; i < depth; ++i)
        text += "<a>";
    for (int i = 0; i < depth; ++i)
        text += "</a>";
    return text + "</log></configuration>";
}

/// Ten entities, each ten times the one before.
QByteArray expandingEntities()
{
    QByteArray text = "<!DOCTYPE configuration [<!ENTITY e0 \"ten letters\">";
    for (int i = 1; i < 10; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        text += "<!ENTITY e" + QByteArray::number(i) + " \"" + inner.repeated(10) + "\">";
    }
    return text + "]>" + logWith("<directory>&e9;</directory>");
}

QByteArray utf16(const QString &text)
{
    QByteArray bytes = "\xff\xfe";
    for (const QChar c : text) {
        bytes += static_cast<char>(c.unicode() & 0xffU);
        bytes += static_cast<char>(c.unicode() >> 8U);
    }
    return bytes;
}

/// Work of a child process, whose standard error the test reads. Prints the settings at the end.
int childMain(int argc, char *argv[])
{
    ConfigFile *config = ConfigFile::instance();
    bool ok = true;
    if (std::strcmp(argv[1], kReadArgument) == 0) {
        ok = config->read(argv[2]);
    } else if (std::strcmp(argv[1], kWriteArgument) == 0) {
        config->read(argv[2]);
        if (argc > 3)
            config->read(argv[3]);
        ok = config->write();
    } else if (std::strcmp(argv[1], kFullWriteArgument) == 0) {
        config->read(argv[2]);
        // No file may grow: what a full disk does, without one.
        const rlimit noRoom = {0, 0};
        std::signal(SIGXFSZ, SIG_IGN);
        ok = ::setrlimit(RLIMIT_FSIZE, &noRoom) == 0 && config->write();
    } else {
        config->setDirectory(QByteArray(std::atoi(argv[2]), 'x').constData());
    }
    const ConfigSettings *s = config->settings();
    std::printf("%d|%s|%d%d%d", ok, s->directory, s->displayTime, s->textDebug, s->navDebug);
    return 0;
}

} // namespace

class TestConfigFile : public QObject
{
    Q_OBJECT

private slots:
    void startsEmpty();
    void init();
    void readsBooleans_data();
    void readsBooleans();
    void readsEachSetting();
    void keepsSettingsThatAreAbsent_data();
    void keepsSettingsThatAreAbsent();
    void laterDuplicateWins();
    void namesAreCaseSensitive();
    void refusesWithoutChange_data();
    void refusesWithoutChange();
    void survivesAnyFile_data();
    void survivesAnyFile();
    void survivesWhatIsNoFile_data();
    void survivesWhatIsNoFile();
    void reportsAReadThatFails();
    void refusesOverlongDirectory_data();
    void refusesOverlongDirectory();
    void refusesOverlongDirectoryInTheFile();
    void writesTheFixedForm();
    void dropsWhatItDoesNotKnow();
    void readsBackWhatItWrote_data();
    void readsBackWhatItWrote();
    void writesToTheFileThatCouldNotBeRead();
    void reportsFailedWriteAndKeepsTheFile();
    void reportsAWriteThatFindsNoRoom();

private:
    QByteArray store(const QByteArray &content, const char *name = "config.xml");
    QByteArray content(const char *name = "config.xml");

    QTemporaryDir folder;
    ConfigFile *config = ConfigFile::instance();
    ConfigSettings *settings = ConfigFile::instance()->settings();
};

QByteArray TestConfigFile::store(const QByteArray &content, const char *name)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot prepare %s", name);
    return QFile::encodeName(file.fileName());
}

QByteArray TestConfigFile::content(const char *name)
{
    QFile file(folder.filePath(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

void TestConfigFile::startsEmpty()
{
    QCOMPARE(ConfigFile::instance(), config);
    for (const char byte : settings->directory)
        QCOMPARE(byte, '\0');
    QVERIFY(!settings->displayTime);
    QVERIFY(!settings->textDebug);
    QVERIFY(!settings->navDebug);
}

void TestConfigFile::init()
{
    QVERIFY(folder.isValid());
    *settings = ConfigSettings();
}

void TestConfigFile::readsBooleans_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("on");
    QTest::newRow("yes reads as true") << QByteArray("yes") << true;
    QTest::newRow("Yes") << QByteArray("Yes") << true;
    QTest::newRow("YES") << QByteArray("YES") << true;
    QTest::newRow("yEs") << QByteArray("yEs") << true;
    QTest::newRow("1 reads as false") << QByteArray("1") << false;
    QTest::newRow("true reads as false") << QByteArray("true") << false;
    QTest::newRow("No") << QByteArray("No") << false;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("with blanks") << QByteArray(" Yes ") << false;
    QTest::newRow("cut off") << QByteArray("Ye") << false;
    QTest::newRow("with more") << QByteArray("Yes!") << false;
    QTest::newRow("in an element of its own") << QByteArray("<b>Yes</b>") << true;
}

void TestConfigFile::readsBooleans()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, on);
    settings->displayTime = settings->textDebug = settings->navDebug = !on;
    QVERIFY(config->read(store(logWith("<displayTime>" + text + "</displayTime><textDebug>" + text +
                                       "</textDebug><navDebug>" + text + "</navDebug>"))));
    QCOMPARE(settings->displayTime, on);
    QCOMPARE(settings->textDebug, on);
    QCOMPARE(settings->navDebug, on);
}

void TestConfigFile::readsEachSetting()
{
    QVERIFY(config->read(store(settingsFile("/data/log", "Yes", "No", "No"))));
    QCOMPARE(settings->directory, "/data/log");
    QVERIFY(settings->displayTime && !settings->textDebug && !settings->navDebug);
    QVERIFY(config->read(store(settingsFile("", "No", "Yes", "No"))));
    QCOMPARE(settings->directory, "");
    QVERIFY(!settings->displayTime && settings->textDebug && !settings->navDebug);
    QVERIFY(config->read(store(settingsFile("", "No", "No", "Yes"))));
    QVERIFY(!settings->displayTime && !settings->textDebug && settings->navDebug);
}

void TestConfigFile::keepsSettingsThatAreAbsent_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("no log element") << QByteArray("<configuration><common/></configuration>");
    QTest::newRow("empty root") << QByteArray("<configuration/>");
    QTest::newRow("empty log element") << logWith("");
    QTest::newRow("unknown elements") << logWith("<color>red</color><!-- none -->text");
    QTest::newRow("outside of log")
        << QByteArray("<configuration><directory>/x</directory><test><log><navDebug>No</navDebug>"
                      "</log></test></configuration>");
}

void TestConfigFile::keepsSettingsThatAreAbsent()
{
    QFETCH(QByteArray, file);
    config->setDirectory("/kept");
    config->setDisplayTime(true);
    settings->navDebug = true;
    QVERIFY(config->read(store(file)));
    QCOMPARE(settings->directory, "/kept");
    QVERIFY(settings->displayTime && !settings->textDebug && settings->navDebug);
}

void TestConfigFile::laterDuplicateWins()
{
    QVERIFY(config->read(store("<configuration><log><directory>/a/long/one</directory>"
                               "<displayTime>Yes</displayTime><directory>/b</directory></log>"
                               "<log><displayTime>No</displayTime></log></configuration>")));
    QCOMPARE(settings->directory, "/b");
    QVERIFY(!settings->displayTime);
}

void TestConfigFile::namesAreCaseSensitive()
{
    QVERIFY(config->read(store("<configuration><Log><directory>/x</directory></Log><log>"
                               "<Directory>/x</Directory><displaytime>Yes</displaytime></log>"
                               "</configuration>")));
    QCOMPARE(settings->directory, "");
    QVERIFY(!settings->displayTime);
}

void TestConfigFile::refusesWithoutChange_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("line");
    const QByteArray log = "<log><directory>/x</directory><displayTime>Yes</displayTime></log>";
    QTest::newRow("missing file") << QByteArray()
                                  << "^Error: cannot read file %1: No such file or directory\n$";
    QTest::newRow("root named config") << "<config>" + log + "</config>"
                                       << "^Error: Not a configuration file\n$";
    QTest::newRow("root in capitals") << "<Configuration>" + log + "</Configuration>"
                                      << "^Error: Not a configuration file\n$";
    QTest::newRow("no XML") << QByteArray("directory=/x")
                            << "^Error : parse error at line 1, [0-9]+: .+\n$";
    QTest::newRow("not closed") << "<configuration>\n" + log
                                << "^Error : parse error at line 2, [0-9]+: .+\n$";
}

void TestConfigFile::refusesWithoutChange()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, line);
    QFile::remove(folder.filePath("config.xml"));
    if (!file.isEmpty())
        store(file);
    const QString path = folder.filePath("config.xml");
    const ChildResult child = runSelf({kReadArgument, path});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray("0||000"));
    const QRegularExpression expected(
        line.contains("%1") ? line.arg(QRegularExpression::escape(path)) : line);
    QVERIFY2(expected.match(QString::fromLocal8Bit(child.error)).hasMatch(), child.error);
}

void TestConfigFile::survivesAnyFile_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("line"); ///< beginning of the error line; empty: it is read
    const QByteArray parseError = "Error : parse error at line ";
    const QByteArray good = logWith("<displayTime>Yes</displayTime>");
    QTest::newRow("blanks up to the limit")
        << good + QByteArray((1 << 20) - good.size(), ' ') << QByteArray();
    QTest::newRow("huge") << good + QByteArray(100 << 20, ' ')
                          << QByteArray("Error: cannot read file ");
    QTest::newRow("one huge word") << logWith("<displayTime>" + QByteArray(1000000, 'Y') +
                                              "</displayTime><displayTime>Yes</displayTime>")
                                   << QByteArray();
    QTest::newRow("many elements")
        << logWith(QByteArray("<a/>").repeated(250000) + "<displayTime>Yes</displayTime>")
        << QByteArray();
    QTest::newRow("some nesting") << nested(90) << QByteArray();
    QTest::newRow("deep nesting") << nested(149000) << parseError;
    QTest::newRow("deep and never closed") << QByteArray("<a>").repeated(340000) << parseError;
    QTest::newRow("entity expansion") << expandingEntities() << parseError;
    QTest::newRow("entity of itself")
        << "<!DOCTYPE configuration [<!ENTITY e \"&e;\">]>" + logWith("<directory>&e;</directory>")
        << parseError;
    QTest::newRow("Latin-1 without saying so")
        << logWith("<directory>/gr\xfc\xdf</directory>") << parseError;
    QTest::newRow("UTF-16") << utf16(QString::fromLatin1(good)) << QByteArray();
    QTest::newRow("UTF-16 cut in a character")
        << utf16(QString::fromLatin1(good)).chopped(1) << parseError;
    QTest::newRow("unknown encoding")
        << "<?xml version=\"1.0\" encoding=\"no-such\"?>" + good << parseError;
    QTest::newRow("NUL bytes") << QByteArray(1000, '\0') << parseError;
    QTest::newRow("NUL byte inside")
        << logWith("<directory>/a" + QByteArray(1, '\0') + "b</directory>") << parseError;
    QTest::newRow("binary") << QByteArray("\x7f\x45\x4c\x46\x02\x01\x01\xfe\xff") << parseError;
    QTest::newRow("truncated in a tag") << good.left(30) << parseError;
    QTest::newRow("empty") << QByteArray("") << parseError;
}

void TestConfigFile::survivesAnyFile()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, line);
    const ChildResult child = runSelf({kReadArgument, QFile::decodeName(store(file))});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray(line.isEmpty() ? "1||100" : "0||000"));
    QVERIFY2(child.error.startsWith(line), child.error);
    QCOMPARE(child.error.count('\n'), line.isEmpty() ? 0 : 1);
}

void TestConfigFile::survivesWhatIsNoFile_data()
{
    QTest::addColumn<bool>("pipe");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("folder") << false << QByteArray("file to open is a directory");
    QTest::newRow("pipe without a writer") << true << QByteArray("Not a regular file");
}

void TestConfigFile::survivesWhatIsNoFile()
{
    QFETCH(bool, pipe);
    QFETCH(QByteArray, reason);
    const QString path = folder.filePath(QTest::currentDataTag());
    if (pipe)
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else
        QVERIFY(QDir().mkdir(path));
    for (const char *argument : {kReadArgument, kWriteArgument}) {
        const ChildResult child = runSelf({argument, path});
        QVERIFY(child.finished);
        QCOMPARE(child.output, QByteArray("0||000"));
        const QByteArray what = argument == kReadArgument ? "read" : "write";
        const QByteArray line = "Error: cannot " + what + " file " + QFile::encodeName(path) + ": ";
        QVERIFY2(child.error.contains(line), child.error);
        QVERIFY2(argument == kWriteArgument || child.error == line + reason + '\n', child.error);
    }
}

void TestConfigFile::reportsAReadThatFails()
{
    // An ordinary file that can be opened; there is nothing to read at its beginning.
    const QString path = QStringLiteral("/proc/self/mem");
    const ChildResult child = runSelf({kReadArgument, path});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray("0||000"));
    QCOMPARE(child.error,
             "Error: cannot read file " + QFile::encodeName(path) + ": Input/output error\n");
}

void TestConfigFile::refusesOverlongDirectory_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("fits");
    QTest::newRow("511 bytes and NUL fit") << 511 << true;
    QTest::newRow("512 bytes end the process") << 512 << false;
    QTest::newRow("5000 bytes end the process") << 5000 << false;
}

void TestConfigFile::refusesOverlongDirectory()
{
    QFETCH(int, length);
    QFETCH(bool, fits);
    const ChildResult child = runSelf({kSetDirectoryArgument, QString::number(length)});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, fits ? 0 : 1);
    QCOMPARE(child.output, fits ? "1|" + QByteArray(length, 'x') + "|000" : QByteArray());
    QCOMPARE(child.error.startsWith("Error: ") && child.error.count('\n') == 1, !fits);
}

void TestConfigFile::refusesOverlongDirectoryInTheFile()
{
    const QByteArray path = store(logWith("<directory>" + QByteArray(512, 'x') + "</directory>"));
    const ChildResult child = runSelf({kReadArgument, QFile::decodeName(path)});
    QVERIFY(child.finished);
    QCOMPARE(child.exitCode, 1);
    QVERIFY2(child.error.startsWith("Error: "), child.error);
}

void TestConfigFile::writesTheFixedForm()
{
    const QByteArray path = store("<configuration/>");
    QVERIFY(config->read(path));
    QVERIFY(config->write());
    QCOMPARE(content(), settingsFile("", "No", "No", "No"));

    config->setDirectory("/data/log");
    config->setDisplayTime(true);
    settings->textDebug = settings->navDebug = true;
    QVERIFY(config->write());
    QCOMPARE(content(), settingsFile("/data/log", "Yes", "Yes", "Yes"));
}

void TestConfigFile::dropsWhatItDoesNotKnow()
{
    const QByteArray path =
        store("<?xml version=\"1.0\"?>\n<!-- by hand -->\n<configuration version=\"2\"><extra/>"
              "<log a=\"b\"><directory c=\"d\">/data/log</directory><color>red</color></log>"
              "<common>text</common></configuration>");
    QVERIFY(config->read(path));
    QVERIFY(config->write());
    QCOMPARE(content(), settingsFile("/data/log", "No", "No", "No"));
}

void TestConfigFile::readsBackWhatItWrote_data()
{
    QTest::addColumn<QByteArray>("directory");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("markup") << QByteArray("/a<b>&amp;\"'c");
    QTest::newRow("blanks inside") << QByteArray("/a  b");
    QTest::newRow("not ASCII") << QString::fromUtf8("/gr\u00FC\u00DFe").toLocal8Bit();
    QTest::newRow("511 bytes") << QByteArray(511, 'y');
}

void TestConfigFile::readsBackWhatItWrote()
{
    QFETCH(QByteArray, directory);
    QVERIFY(config->read(store("<configuration/>")));
    config->setDirectory(directory.constData());
    settings->textDebug = true;
    QVERIFY(config->write());
    *settings = ConfigSettings();
    QVERIFY(config->read(QFile::encodeName(folder.filePath("config.xml"))));
    QCOMPARE(QByteArray(settings->directory), directory);
    QVERIFY(!settings->displayTime && settings->textDebug && !settings->navDebug);
}

void TestConfigFile::writesToTheFileThatCouldNotBeRead()
{
    const QString path = folder.filePath("new.xml");
    const ChildResult child = runSelf({kWriteArgument, path});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray("1||000"));
    QCOMPARE(content("new.xml"), settingsFile("", "No", "No", "No"));
}

void TestConfigFile::reportsFailedWriteAndKeepsTheFile()
{
    const QByteArray old = settingsFile("/old", "Yes", "No", "No");
    const QString good = QFile::decodeName(store(old));
    const QString bad = folder.filePath("none/config.xml");
    const ChildResult child = runSelf({kWriteArgument, good, bad});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray("0|/old|100")); // what was read stays in memory
    const QByteArray line =
        "Error: cannot write file " + QFile::encodeName(bad) + ": No such file or directory\n";
    QVERIFY2(child.error.endsWith(line), child.error);
    QCOMPARE(content(), old);
}

void TestConfigFile::reportsAWriteThatFindsNoRoom()
{
    const QString path = folder.filePath("config.xml");
    store(settingsFile("/old", "Yes", "No", "No"));
    const ChildResult child = runSelf({kFullWriteArgument, path});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray("1|/old|100")); // it could be opened
    QVERIFY2(child.error.startsWith("Error: cannot write file " + QFile::encodeName(path) + ": "),
             child.error);
}

int main(int argc, char *argv[])
{
    if (argc > 2 &&
        (std::strcmp(argv[1], kReadArgument) == 0 || std::strcmp(argv[1], kWriteArgument) == 0 ||
         std::strcmp(argv[1], kFullWriteArgument) == 0 ||
         std::strcmp(argv[1], kSetDirectoryArgument) == 0))
        return childMain(argc, argv);
    QCoreApplication app(argc, argv);
    TestConfigFile test;
    return QTest::qExec(&test, argc, argv);
}
#include "TestConfigFile.moc"
