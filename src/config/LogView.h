// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/ISSView.h"

#include <QString>
#include <QTimer>

#include <memory>

class GnssInfo;
class LogFiles;

namespace Ui {
class LogView;
}

/// Page that shows the NMEA text as it arrives and, while "Save as File" is ticked, copies it into
/// the NMEA log. The window's refresh drives it, whichever page is shown; while the refresh is off
/// nothing is shown or logged. User-interface thread.
class LogView : public ISSView
{
    Q_OBJECT

public:
    explicit LogView(QWidget *parent = nullptr);
    ~LogView() override;

    void refreshView() override;

public slots:
    /// Takes the text that came since the last call out of the model, shows it as a paragraph of
    /// its own and logs it. Every third call begins with an empty display.
    void updateLogView();
    /// The box is read at every update instead.
    void on_checkBox_clicked();

private:
    void appendParagraph(const QString &text);
    void showNextSlice();
    void logText(const QString &text);

    std::unique_ptr<Ui::LogView> ui;
    GnssInfo *gnssInfo = nullptr; ///< the process-wide model, not owned
    LogFiles *logFiles = nullptr; ///< the process-wide log files, not owned
    qint32 updateCount = 0;       ///< calls of updateLogView()
    QString waitingText;          ///< to be shown by the next slices
    QTimer sliceTimer;
};
