// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/ISSView.h"
#include "views/SVInfoViewer.h"

#include <memory>

namespace Ui {
class SVView;
}

class ConfigView;
class ControlView;
class GnssInfo;
class Radar;
class SatBar;

/// Satellite page: nine values of the position fix, and below them the satellites in view as bar
/// chart or sky plot. The main window's timer refreshes it, the control page's buttons clear it.
/// User-interface thread.
class SVView : public ISSView
{
    Q_OBJECT

public:
    explicit SVView(QWidget *parent = nullptr);
    ~SVView() override;

    void refreshView() override;

    /// Shows the model's current satellites in both widgets.
    void updateCN0Chart();

public slots:
    void updateLocation();
    void updateLocTime();
    void updateSats();
    /// Clears everything, but only while the receiver is stopped.
    void clearView();
    /// Clears the model's location and seven of the values. The fix value stays on purpose, and
    /// clearLocTime() clears the UTC time.
    void clearLocation();
    void clearSats();
    void clearLocTime();
    /// Takes the number of core constellations that the control page selected.
    void setSvDispalyModel(uint);

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void on_pushButton_viewSwitch_clicked();

private:
    void showList();
    void connectControlView();

    /// Entries of the page's own list: more than the model ever has.
    static constexpr int kListRoom = 72;

    std::unique_ptr<Ui::SVView> ui;
    tSvInfo svList[kListRoom];
    SatBar *satBar = nullptr;
    Radar *radar = nullptr;
    ConfigView *configView = nullptr; ///< only kept: asking for it is what makes that page
    ControlView *controlView = nullptr;
    GnssInfo *gnssInfo = nullptr;
    bool multiConstellation = false; ///< more than one constellation was selected; read by nobody
    qint32 svCount = 0;              ///< entries of svList filled so far; 0 between refreshes
};
