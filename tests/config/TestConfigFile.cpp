// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigFile.h"

#include "support/SelfProcess.h"
#include "support/SettingsFile.h"

#include <QDomDocument>
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
    void readsWhatTheDomReads_data();
    void readsWhatTheDomReads();
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
    void readsBackEveryCharacter_data();
    void readsBackEveryCharacter();
    void keepsTheOtherSettingsOfAnUndecodableDirectory();
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

void TestConfigFile::readsWhatTheDomReads_data()
{
    QTest::addColumn<QByteArray>("file");
    const auto row = [](const char *name, const QByteArray &file) {
        QTest::newRow(name) << file;
    };
    const QByteArray log = "<log><directory>/x</directory><displayTime>Yes</"
                           "displayTime><textDebug>yes</textDebug></log>";
    const QByteArray good = "<configuration>" + log + "</configuration>";
    const auto directory = [](const QByteArray &text) {
        return logWith("<directory>" + text + "</directory><navDebug>Yes</navDebug>");
    };

    row("plain", good);
    row("declaration", "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n" + good);
    row("XML 1.1", "<?xml version=\"1.1\"?>" + good);
    row("version 2.0", "<?xml version=\"2.0\"?>" + good);
    row("declaration after a blank", " <?xml version=\"1.0\"?>" + good);
    row("declaration without a version", "<?xml encoding=\"UTF-8\"?>" + good);
    row("two declarations", "<?xml version=\"1.0\"?><?xml version=\"1.0\"?>" + good);
    row("comments and instructions", "<!-- a --><?b c?>" + good + "<!-- d -->\n<?e?>\n");
    row("comment with two dashes", "<!-- a -- b -->" + good);
    row("comment not closed", good + "<!-- a");
    row("lines that end as elsewhere", QByteArray(good).replace("><", ">\r\n<"));
    row("lines that end with CR", QByteArray(good).replace("><", ">\r<") + "<");

    row("undeclared prefix", "<configuration><x:foo/>" + log + "</configuration>");
    row("undeclared prefix of an attribute",
        "<configuration xsi:schemaLocation=\"a b\">" + log + "</configuration>");
    row("prefix of the root", "<x:configuration>" + log + "</x:configuration>");
    row("default namespace", "<configuration xmlns=\"urn:a\">" + log + "</configuration>");
    row("prefix of the log",
        "<configuration xmlns:x=\"urn:a\"><x:log><directory>/x</directory></x:log>"
        "</configuration>");
    row("colons alone", "<:>" + log + "</:>");
    row("repeated attribute", "<configuration a=\"1\" a=\"2\">" + log + "</configuration>");
    row("attribute without a value", "<configuration a>" + log + "</configuration>");
    row("attribute without quotes", "<configuration a=1>" + log + "</configuration>");
    row("less-than in an attribute", "<configuration a=\"<\">" + log + "</configuration>");
    row("attributes without a blank", "<configuration a=\"1\"b=\"2\">" + log + "</configuration>");

    row("undeclared entity", directory("/x&foo;y"));
    row("undeclared entity alone", directory("&foo;"));
    row("undeclared entity in an attribute",
        "<configuration a=\"&foo;\">" + log + "</configuration>");
    row("predefined entities", directory("/&lt;&gt;&amp;&quot;&apos;"));
    row("declared entity",
        "<!DOCTYPE configuration [<!ENTITY e \"/data\">]>" + directory("&e;/log"));
    row("entity of elements",
        "<!DOCTYPE configuration [<!ENTITY e \"<directory>/e</directory>\">]>" +
            logWith("&e;<displayTime>Yes</displayTime>"));
    row("external entity",
        "<!DOCTYPE configuration [<!ENTITY e SYSTEM \"/etc/hostname\">]>" + directory("/x&e;"));
    row("parameter entity",
        "<!DOCTYPE configuration [<!ENTITY % p \"<!ENTITY e '/p'>\">%p;]>" + directory("&e;"));
    row("entity of itself", "<!DOCTYPE configuration [<!ENTITY e \"&e;\">]>" + directory("&e;"));
    row("entities of each other",
        "<!DOCTYPE configuration [<!ENTITY e \"&f;\"><!ENTITY f \"&e;\">]>" + directory("&e;"));
    row("entity expansion", expandingEntities());
    row("reference without an end", directory("/x&amp"));
    row("ampersand alone", directory("/x & y"));
    row("character references", directory("/&#65;&#x42;&#xfffe;&#xffff;&#x1D11E;"));
    row("character reference of a control character", directory("/a&#1;b"));
    row("character reference of nothing", directory("/a&#;b"));
    row("character reference too large", directory("/a&#x110000;b"));
    row("document type", "<!DOCTYPE configuration SYSTEM \"a.dtd\">" + good);
    row("element declarations", "<!DOCTYPE configuration [<!ELEMENT configuration "
                                "(a|(b,c)*)><!ATTLIST log a (b|c) \"b\">]>" +
                                    good);
    row("two document types", "<!DOCTYPE a><!DOCTYPE b>" + good);

    row("CDATA", directory("<![CDATA[/a<b>&c]]>"));
    row("blank CDATA", directory("/x<![CDATA[ ]]>y"));
    row("CDATA not closed", directory("<![CDATA[/a"));
    row("end of CDATA in text", directory("/a]]>b"));
    row("blanks around", directory(" \n /x \t"));
    row("blanks only", directory(" \t\n "));
    row("comment within", directory("/a<!-- b -->c"));
    row("instruction within", directory("/a<?b?>c"));
    row("control character", directory("/a\x01"
                                       "b"));
    row("NUL byte", directory("/a" + QByteArray(1, '\0') + "b"));
    row("U+FFFE", directory("/a\xef\xbf\xbe"
                            "b"));
    row("U+FFFF", directory("/a\xef\xbf\xbf"
                            "b"));

    row("section not closed", "<configuration>" + log);
    row("section not closed on line 2", "<configuration>\n" + log + "\n");
    row("log not closed", "<configuration><log><directory>/x</directory></configuration>");
    row("crossed elements", "<configuration><log></configuration></log>");
    row("end alone", "</configuration>");
    row("two roots", good + good);
    row("text after the root", good + "text");
    row("text before the root", "text" + good);
    row("no XML", "directory=/x");
    row("comment only", "<!-- a -->");
    row("blanks as the whole", " \n ");
    row("empty", "");
    row("cut in a tag", good.left(30));
    row("cut in a name", "<config");
    row("a less-than alone", "<");
    row("blank in a tag", "< configuration/>");
    row("name that begins with a digit", "<1configuration/>");
    row("HTML", "<!DOCTYPE html>\n<html><head><meta charset=utf-8></head></html>");
    row("binary", "\x7f\x45\x4c\x46\x02\x01\x01\xfe\xff");
    row("NUL bytes", QByteArray(1000, '\0'));

    row("Latin-1 without saying so", directory("/gr\xfc\xdf"));
    row("Latin-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + directory("/gr\xfc\xdf"));
    row("UTF-8 with a mark", "\xef\xbb\xbf" + directory("/gr\xc3\xbc"));
    row("UTF-16", utf16(QString::fromLatin1(directory("/gr\xfc\xdf"))));
    row("UTF-16 cut in a character", utf16(QString::fromLatin1(good)).chopped(1));
    row("UTF-16 as said in UTF-8", "<?xml version=\"1.0\" encoding=\"UTF-16\"?>" + good);
    row("unknown encoding", "<?xml version=\"1.0\" encoding=\"no-such\"?>" + good);
    row("encoding said late", "<!-- " + QByteArray(2000, ' ') + " -->" + directory("/gr\xc3\xbc"));
    row("overlong UTF-8", directory("/a\xc0\xaf"
                                    "b"));
    row("surrogates in UTF-8", directory("/a\xed\xa0\x80"
                                         "b"));

    row("900 levels", nested(900));
    row("parentheses in a comment", "<!-- " + QByteArray(20000, '(') + " -->" + good);
    row("parentheses in a section",
        "<!DOCTYPE configuration [<!ELEMENT a (b)>]><configuration><test>" +
            QByteArray(20000, '(') + "</test>" + log + "</configuration>");
    for (const QByteArray type : {"", " SYSTEM \"a.dtd\"", " []"}) {
        row("parentheses after a document type" + type,
            "<!DOCTYPE configuration" + type + "><!-- " + QByteArray(20000, '(') + " -->" + good);
    }
    row("9000 parentheses in a document type",
        "<!DOCTYPE configuration [<!-- " + QByteArray(9000, '(') + " -->]>" + good);
    row("a mebibyte", good + QByteArray((1 << 20) - good.size(), ' '));
}

void TestConfigFile::readsWhatTheDomReads()
{
    QFETCH(QByteArray, file);
    QDomDocument document;
    QString message;
    int line = 0;
    int column = 0;
    // Reading as text leaves out every CR.
    const bool parses =
        document.setContent(QByteArray(file).replace('\r', ""), false, &message, &line, &column);
    const QDomElement root = document.documentElement();
    const bool isRead = parses && root.tagName() == "configuration";
    QByteArray error;
    if (!parses)
        error = QStringLiteral("Error : parse error at line %1, %2: %3\n")
                    .arg(QString::number(line), QString::number(column), message)
                    .toLocal8Bit();
    else if (!isRead)
        error = "Error: Not a configuration file\n";
    QByteArray output = "0||000";
    if (isRead) {
        const QDomElement log = root.firstChildElement("log");
        const auto isOn = [&log](const char *name) {
            return log.firstChildElement(name).text().compare("yes", Qt::CaseInsensitive) == 0;
        };
        output =
            "1|" + QByteArray(log.firstChildElement("directory").text().toLocal8Bit().constData());
        output += '|';
        for (const char *name : {"displayTime", "textDebug", "navDebug"})
            output += isOn(name) ? '1' : '0';
    }

    const ChildResult child = runSelf({kReadArgument, QFile::decodeName(store(file))});
    QVERIFY(child.finished);
    QCOMPARE(child.error, error);
    QCOMPARE(child.output, output);
}

void TestConfigFile::survivesAnyFile_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("end"); ///< of the error line; empty: it is read
    const QByteArray good = logWith("<displayTime>Yes</displayTime>");
    const auto withEntities = [](const QByteArray &declarations, const QByteArray &content) {
        return "<!DOCTYPE configuration [" + declarations + "]><configuration" + content +
               "</configuration>";
    };
    const auto entity = [](const QByteArray &name, const QByteArray &text) {
        return "<!ENTITY " + name + " \"" + text + "\">";
    };
    QTest::newRow("huge") << good + QByteArray(100 << 20, ' ') << QByteArray(": File too large");
    QTest::newRow("one huge word") << logWith("<displayTime>" + QByteArray(1000000, 'Y') +
                                              "</displayTime><displayTime>Yes</displayTime>")
                                   << QByteArray();
    QTest::newRow("many elements")
        << logWith(QByteArray("<a/>").repeated(250000) + "<displayTime>Yes</displayTime>")
        << QByteArray();

    const QByteArray deepElements = "elements are nested too deeply";
    QTest::newRow("as deep as can be") << nested(998) << QByteArray();
    QTest::newRow("a level deeper") << nested(999) << deepElements;
    QTest::newRow("deep nesting") << nested(149000) << deepElements;
    QTest::newRow("deep and never closed") << QByteArray("<a>").repeated(340000) << deepElements;
    QTest::newRow("deep in entities")
        << withEntities(entity("e", QByteArray("<a>").repeated(1000)), ">&e;&e;&e;")
        << deepElements;

    const QByteArray deepGroups = "groups are nested too deeply";
    QTest::newRow("deep groups") << withEntities("<!ELEMENT a " + QByteArray(1000000, '('), ">")
                                 << deepGroups;
    QTest::newRow("deep groups in an entity")
        << withEntities(
               entity("% p", "<!ELEMENT a " + QByteArray("&#40;").repeated(100000)) + "%p;", ">")
        << deepGroups;

    const QByteArray expansion = "entities expand to too much text";
    const QByteArray thousand = entity("e", QByteArray(1000, 'x'));
    const QByteArray on = "<log><displayTime>Yes</displayTime></log>";
    QTest::newRow("as much expanded as can be")
        << withEntities(thousand, ">" + QByteArray("&e;").repeated(1047) + on) << QByteArray();
    QTest::newRow("expanded once more")
        << withEntities(thousand, ">" + QByteArray("&e;").repeated(1048) + on) << expansion;
    QByteArray forward;
    for (int i = 9; i > 0; --i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        forward += entity("e" + QByteArray::number(i), inner.repeated(10));
    }
    forward += entity("e0", "ten letters");
    QTest::newRow("entities that expand before they are declared")
        << withEntities(forward, ">&e9;") << expansion;
    QTest::newRow("the same in an attribute") << withEntities(forward, " a=\"&e9;\">") << expansion;
    QTest::newRow("one entity many times")
        << withEntities(entity("e", QByteArray("<a/>").repeated(1000)),
                        ">" + QByteArray("&e;").repeated(300000))
        << expansion;
    QByteArray many;
    for (int i = 0; many.size() < 1000000; ++i)
        many += entity("e" + QByteArray::number(i), "");
    QTest::newRow("many entities") << withEntities(many, ">") << QByteArray("too many entities");
}

void TestConfigFile::survivesAnyFile()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, end);
    const ChildResult child = runSelf({kReadArgument, QFile::decodeName(store(file))});
    QVERIFY(child.finished);
    QCOMPARE(child.output, QByteArray(end.isEmpty() ? "1||100" : "0||000"));
    QVERIFY2(end.isEmpty() ? child.error.isEmpty() : child.error.endsWith(end + '\n'), child.error);
    QCOMPARE(child.error.count('\n'), end.isEmpty() ? 0 : 1);
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
    QTest::newRow("control character") << QByteArray("/a\x01"
                                                     "b");
    QTest::newRow("all control characters") << QByteArray(
        "/\x01\x02\x03\x04\x05\x06\x07\x08\t\n\x0b\x0c\r\x0e\x0f\x10\x11\x12\x13\x14\x15"
        "\x16\x17\x18\x19\x1a\x1b\x1c\x1d\x1e\x1f\x7f");
    QTest::newRow("blanks around") << QByteArray("  \t/a \n");
    QTest::newRow("a blank") << QByteArray(" ");
    QTest::newRow("blanks only") << QByteArray(" \t\n ");
    QTest::newRow("CR around") << QByteArray("\r/a\r\n");
    QTest::newRow("end of CDATA") << QByteArray("/a]]>b<![CDATA[");
    QTest::newRow("references") << QByteArray("/&#1;&foo;%p;");
    QTest::newRow("comment") << QByteArray("/<!-- a -- b -->?>");
    QTest::newRow("a mark of the byte order") << QByteArray("\xef\xbb\xbf/a");
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

void TestConfigFile::readsBackEveryCharacter_data()
{
    QTest::addColumn<uint>("first");
    for (const uint first : {0x0U, 0x10000U, 0x100000U})
        QTest::addRow("U+%X and the 65535 after it", first) << first;
}

void TestConfigFile::readsBackEveryCharacter()
{
    QFETCH(uint, first);
    const QByteArray path = store("<configuration/>");
    QVERIFY(config->read(path));
    const uint end = first + 0x10000;
    constexpr uint kAtOnce = 100; // four bytes each fit into the directory
    for (uint c = first; c < end; c += kAtOnce) {
        QString text;
        for (uint next = qMax(c, 1U); next < qMin(c + kAtOnce, end); ++next)
            text += QString::fromUcs4(&next, 1); // what the locale lacks becomes a question mark
        const QByteArray directory = "/" + text.toLocal8Bit();
        config->setDirectory(directory.constData());
        QVERIFY(config->write());
        *settings = ConfigSettings();
        QVERIFY2(config->read(path), qPrintable(QString::number(c, 16)));
        QCOMPARE(QByteArray(settings->directory), directory);
    }
}

void TestConfigFile::keepsTheOtherSettingsOfAnUndecodableDirectory()
{
    const QByteArray directory = "/gr\xfc\xdf/a\xed\xa0\x80"
                                 "b";
    const QByteArray path = store("<configuration/>");
    QVERIFY(config->read(path));
    config->setDirectory(directory.constData());
    settings->navDebug = true;
    QVERIFY(config->write());
    *settings = ConfigSettings();
    QVERIFY(config->read(path));
    QCOMPARE(QByteArray(settings->directory), QString::fromLocal8Bit(directory).toLocal8Bit());
    QVERIFY(!settings->displayTime && !settings->textDebug && settings->navDebug);
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
