// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "views/SVView.h"

#include "config/ConfigView.h"
#include "config/DebugOutput.h"
#include "control/ControlView.h"
#include "gnss/GnssInfo.h"
#include "views/Radar.h"
#include "views/SatBar.h"

#include "ui_SVView.h"

#include <algorithm>

namespace {

constexpr int kLinesOfPage = 16; ///< line heights of a page on which they are not too many
constexpr int kLineWidths = 23;  ///< widths of a line, in line heights
constexpr int kMinLineHeight = 10;

/// Presses of the view switch, of all satellite pages of the process together.
qint32 viewSwitchPresses = 0;

tSvInfo displayRecord(const tGnssSv &sv)
{
    return {sv.prn, static_cast<double>(sv.azimuth), sv.elevation, sv.snr, sv.usedInFix};
}

QString fixed(double value, int decimals)
{
    return QStringLiteral("%1").arg(value, 0, 'f', decimals, QLatin1Char(' '));
}

QString degrees(double value)
{
    return QStringLiteral("%1 \u00B0").arg(value, 0, 'f', 6, QLatin1Char(' '));
}

QString decimal(qint32 value)
{
    return QStringLiteral("%1").arg(value, 0, 10, QLatin1Char(' '));
}

} // namespace

SVView::SVView(QWidget *parent)
    : ISSView(parent)
    , ui(std::make_unique<Ui::SVView>())
{
    ui->setupUi(this);
    gnssInfo = GnssInfo::instance();
    configView = ConfigView::instance();
    controlView = ControlView::instance();
    satBar = new SatBar;
    radar = new Radar;
    ui->layout->addWidget(satBar);
    ui->layout->addWidget(radar);
    on_pushButton_viewSwitch_clicked();
    connectControlView();
}

SVView::~SVView() = default;

void SVView::refreshView() {}

void SVView::updateCN0Chart()
{
    debugPrint(1, TAG, QStringLiteral("updateCN0Chart"));
    const tGnssSvStatus status = gnssInfo->getSvStatus();
    // The copy may be half written, and its count with it.
    const qint32 count = std::clamp<qint32>(status.numSvs, 0, kMaxSatellites);
    std::transform(status.svList, status.svList + count, svList + svCount, displayRecord);
    svCount += count;
    showList();
    svCount = 0;
}

void SVView::updateLocation()
{
    debugPrint(1, TAG, QStringLiteral("updateLocation"));
    const tGnssLocation location = gnssInfo->getLocation();
    ui->label_lat->setText(degrees(location.latitude));
    ui->label_lon->setText(degrees(location.longitude));
    ui->label_alt->setText(fixed(location.altitude, 2));
    ui->label_fix->setText(decimal(location.fix));
    ui->label_speed->setText(fixed(static_cast<double>(location.speed), 1));
    ui->label_pdop->setText(fixed(static_cast<double>(location.pdop), 1));
    ui->label_hdop->setText(fixed(static_cast<double>(location.hdop), 1));
    ui->label_vdop->setText(fixed(static_cast<double>(location.vdop), 1));
    ui->label_utc->setText(fixed(location.fixTime, 3));
    update();
}

void SVView::updateLocTime()
{
    debugPrint(1, TAG, QStringLiteral("updateLocTime"));
}

void SVView::updateSats()
{
    debugPrint(1, TAG, QStringLiteral("updateSats"));
    updateCN0Chart();
}

void SVView::clearView()
{
    debugPrint(1, TAG, QStringLiteral("cleanView"));
    if (controlView->getState() != ControlView::kIdle)
        return;
    clearLocation();
    clearLocTime();
    clearSats();
}

void SVView::clearLocation()
{
    gnssInfo->clearLocation();
    for (QLabel *label : {ui->label_lat, ui->label_lon, ui->label_alt, ui->label_speed,
                          ui->label_pdop, ui->label_hdop, ui->label_vdop})
        label->setText(QString());
}

void SVView::clearSats()
{
    gnssInfo->clearSvStatus();
    std::fill(std::begin(svList), std::end(svList), tSvInfo());
    svCount = 0;
    showList();
}

void SVView::clearLocTime()
{
    ui->label_utc->setText(QString());
}

void SVView::setSvDispalyModel(uint constellations)
{
    multiConstellation = constellations > 1;
    debugPrint(1, QStringLiteral("setSvDispalyModel"),
               QStringLiteral("%1").arg(multiConstellation ? 1 : 0));
}

// On a small screen the lines of values give way to the satellites. Their height rather than the
// width of each text then decides how large their letters can be, so that all are alike.
void SVView::resizeEvent(QResizeEvent *)
{
    const int lineHeight = std::clamp(std::min(height() / kLinesOfPage, width() / kLineWidths),
                                      kMinLineHeight, fontMetrics().height());
    const QList<QLabel *> labels = findChildren<QLabel *>();
    for (QLabel *label : labels)
        label->setFixedHeight(lineHeight);
}

void SVView::on_pushButton_viewSwitch_clicked()
{
    // The button names the view that the next press brings.
    const bool skyPlot = viewSwitchPresses++ % 2 != 0;
    ui->pushButton_viewSwitch->setText(skyPlot ? tr("Switch To CN0") : tr("Switch To SV"));
    satBar->setVisible(!skyPlot);
    radar->setVisible(skyPlot);
}

void SVView::showList()
{
    satBar->setSvInfo(svList, svCount);
    radar->setSvInfo(svList, svCount);
    satBar->update();
    radar->update();
}

void SVView::connectControlView()
{
    connect(controlView, &ControlView::notSingleConstellation, this, &SVView::setSvDispalyModel);
    connect(controlView->getStartButton(), &QPushButton::clicked, this, &SVView::clearView);
    connect(controlView->getResetButton(), &QPushButton::clicked, this, &SVView::clearSats);
    connect(controlView->getResetButton(), &QPushButton::clicked, this, &SVView::clearLocation);
    connect(controlView->getResetButton(), &QPushButton::clicked, this, &SVView::clearLocTime);
}
