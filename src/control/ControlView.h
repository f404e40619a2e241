// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/ISSView.h"

#include <memory>

class GnssInfo;
class QPushButton;

namespace Ui {
class ControlView;
} // namespace Ui

/// The page that starts, stops and resets the receiver, chooses its constellations and shows its
/// state, time to first fix, UTC time and position. User-interface thread.
///
/// What it shows follows the user's presses even when a command could not be written: the pipe
/// gives no answer, only the NMEA data that arrives later corrects the state.
class ControlView : public ISSView
{
    Q_OBJECT

public:
    /// Use instance(); there is one page for the program, other pages send through it.
    explicit ControlView(QWidget *parent = nullptr);
    ~ControlView() override;

    /// The one page, made on first use without a parent and never destroyed: whoever puts it into
    /// a layout takes it out again before its own end.
    static ControlView *instance();

    /// What the page knows of the receiver.
    enum State : qint32 {
        kUnknown = 0,
        kIdle = 1, ///< stopped by the user
        kRunning = 2,
    };

    /// What the receiver forgets before it starts anew.
    enum ResetType : int {
        kNoReset = 0,
        kHot = 1,
        kWarm = 2,
        kCold = 3,
        kFactory = 4,
    };

    /// A State.
    int getState() const;

    QPushButton *getStartButton() const;
    QPushButton *getResetButton() const;

    void refreshView() override;

signals:
    /// Number of core constellations selected (GPS, GLONASS, Galileo, BeiDou), 0..4; emitted just
    /// before the selection is sent.
    void notSingleConstellation(unsigned int count);
    void enableTimer();
    void disableTimer();
    /// The receiver starts anew: model and reading thread drop what they hold.
    void clear();

private slots:
    void on_pushButton_start_clicked();
    void on_pushButton_locTechSet_clicked();
    void on_pushButton_GpsReset_clicked();
    void on_pushButton_ShowTime_clicked();
    void on_pushButton_ShowLoc_clicked();
    void updateLocTechSet(bool update);
    /// Sends the reset sentence of the chosen start mode. Nothing calls it.
    void updateResetType(bool update);
    void updateLoction();
    void updateUtc();
    void updateTTFF();
    void checkState();

public slots:
    void gnss_start();
    void gnss_stop();
    /// `resetType` is a ResetType; any but the four kinds of start sends an empty command.
    void gnss_reset(int resetType);

private:
    void connectModel();
    int selectedResetType() const;
    unsigned int selectedConstellations() const;
    void showUtc();
    void showPosition();

    std::unique_ptr<Ui::ControlView> ui;
    [[maybe_unused]] QWidget *givenParent = nullptr; ///< as at construction; null for instance()
    qint32 gnssState = kUnknown;
    GnssInfo *gnssInfo = nullptr; ///< the process-wide model, not owned
    bool showTime = false;        ///< UTC time is followed; once set it stays
    bool showLocation = false;    ///< position is followed; once set it stays
};
