// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/HostdProcess.h"
#include "support/ViewerProcess.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

/// What a TTFF test is set to on its page.
struct tTtffSetting
{
    QString type = QStringLiteral("Cold"); ///< as its radio button is called
    int loops = 3;
    int trackingSeconds = 1;
};

/// The real viewer with its TTFF page and a simulated receiver of its own, which is silent until a
/// command starts it: whatever the receiver does comes from the page.
class TtffRig
{
public:
    /// Simulated seconds in a real one. Not more: the receiver restarts for half a simulated
    /// second, in which the viewer must get to forget the old fix even on a busy machine.
    static constexpr int kTimeScale = 2;

    TtffRig();

    /// Starts both, with `ttff` as tavrin-hostd takes it, and shows the TTFF page. `stamped`: lines
    /// of the log carry the time. False, after a warning, when something did not come up.
    bool start(const QString &ttff, bool stamped = true);

    /// Starts both, with a receiver of the test's own that is sending already: `arguments` is how
    /// tavrin-hostd is told of it.
    bool startWith(const QStringList &arguments);

    /// Has a second without a fix come in; without any data the Test button does nothing.
    bool feedData();

    /// Types and presses a setting on the page and waits until the page shows it.
    bool choose(const tTtffSetting &setting);

    /// Presses the Test button, which may be called Stop.
    bool pressTest(int presses = 1);

    QString buttonText();
    /// The lines of the result area.
    QStringList shown();

    /// The logs' file names, the oldest first.
    QStringList logNames() const;
    /// The local time of which a log's name tells, invalid when the name is malformed.
    static QDateTime timeInName(const QString &name);
    /// The lines of a log. A last one without a line end counts as one more, empty line.
    QStringList log(const QString &name) const;

    /// Sentences that the receiver has obeyed, since it fell silent where it was told to.
    QStringList commands();
    /// Seconds to the first fix that the receiver has announced, by reset.
    QList<double> announced();

    /// How often the viewer's trace holds `text`.
    int traced(const QString &text) const { return viewer.standardError().count(text); }
    /// The end of both programs' traces, for a failure's sake.
    QString traces();

    ViewerProcess viewer;

private:
    bool startReceiver(const QString &ttff);
    bool sendStop();
    bool startViewer();
    bool enter(const QString &field, int value);
    bool warn(const char *what);

    HostdProcess hostd;
    bool silenced = false; ///< before the viewer was started
};
