// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "hostd/HostdRig.h"

#include <QElapsedTimer>
#include <QFile>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool HostdRig::isPipe(const QString &path)
{
    struct stat found = {};
    return ::lstat(QFile::encodeName(path).constData(), &found) == 0 && S_ISFIFO(found.st_mode);
}

QByteArray HostdRig::wholeCycles(const QByteArray &bytes)
{
    const int from = bytes.indexOf("$GNGGA");
    const int rmc = bytes.lastIndexOf("$GNRMC");
    const int to = bytes.indexOf('\n', rmc);
    return from < 0 || rmc < 0 || to < 0 ? QByteArray() : bytes.mid(from, to + 1 - from);
}

void HostdRig::init()
{
    root = std::make_unique<QTemporaryDir>();
    daemon = std::make_unique<BoundProcess>();
    report.clear();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TAVRIN_ROOT"), root->path());
    daemon->setProcessEnvironment(environment);
}

void HostdRig::cleanup()
{
    if (daemon->state() != QProcess::NotRunning) {
        daemon->kill();
        daemon->waitForFinished();
    }
}

QString HostdRig::path(const char *name) const
{
    return root->path() + QStringLiteral("/tmp/") + QString::fromLatin1(name);
}

// Starts and waits for both pipes.
bool HostdRig::start(const QStringList &arguments)
{
    return startProgram(QStringLiteral(HOSTD_PROGRAM), arguments);
}

bool HostdRig::startProgram(const QString &program, const QStringList &arguments)
{
    daemon->start(program, arguments);
    if (!daemon->waitForStarted(kLongMs))
        return false;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < kLongMs && !(isPipe(path("agiin")) && isPipe(path("agiout"))))
        QTest::qWait(5);
    return daemon->state() == QProcess::Running && isPipe(path("agiin"));
}

bool HostdRig::reported(const QString &text, int timeoutMs)
{
    QElapsedTimer clock;
    clock.start();
    do {
        report += QString::fromLocal8Bit(daemon->readAllStandardError());
        if (report.contains(text))
            return true;
        QTest::qWait(5);
    } while (clock.elapsed() < timeoutMs);
    return false;
}

int HostdRig::openReader()
{
    return ::open(QFile::encodeName(path("agiin")).constData(), O_RDONLY | O_NONBLOCK);
}

QByteArray HostdRig::readFor(int reader, const std::function<bool(const QByteArray &)> &enough,
                             int timeoutMs)
{
    QByteArray all;
    QElapsedTimer clock;
    clock.start();
    while (!enough(all) && clock.elapsed() < timeoutMs) {
        char buffer[65536];
        const ssize_t size = ::read(reader, buffer, sizeof(buffer));
        if (size > 0)
            all.append(buffer, static_cast<int>(size));
        else
            QTest::qWait(5);
    }
    return all;
}

void HostdRig::send(const QByteArray &command)
{
    const int writer = ::open(QFile::encodeName(path("agiout")).constData(), O_WRONLY | O_NONBLOCK);
    QVERIFY(writer >= 0);
    QCOMPARE(::write(writer, command.constData(), static_cast<size_t>(command.size())),
             static_cast<ssize_t>(command.size()));
    ::close(writer);
}

// Ends the daemon; its exit code, -1 when it crashed or stayed.
int HostdRig::end(int signal)
{
    ::kill(static_cast<pid_t>(daemon->processId()), signal);
    if (!daemon->waitForFinished(kLongMs) || daemon->exitStatus() != QProcess::NormalExit)
        return -1;
    report += QString::fromLocal8Bit(daemon->readAllStandardError());
    return daemon->exitCode();
}
