// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "control/ControlView.h"

#include "base/ConstellationMask.h"
#include "config/DebugOutput.h"
#include "control/CommandChannel.h"
#include "gnss/GnssInfo.h"
#include "ui_ControlView.h"

namespace {

/// The receiver calls the factory start 7, not 4.
QString resetSentence(int resetType)
{
    switch (resetType) {
    case ControlView::kHot:
        return QStringLiteral("$PPLMG,1\r\n");
    case ControlView::kWarm:
        return QStringLiteral("$PPLMG,2\r\n");
    case ControlView::kCold:
        return QStringLiteral("$PPLMG,3\r\n");
    case ControlView::kFactory:
        return QStringLiteral("$PPLMG,7\r\n");
    default:
        return {};
    }
}

QString constellationSentence(unsigned int mask)
{
    return QStringLiteral("$PPLMB,70,%1\r\n").arg(mask, 0, 16);
}

unsigned int countBits(unsigned int mask)
{
    unsigned int count = 0;
    for (; mask != 0; mask &= mask - 1)
        ++count;
    return count;
}

QString twoDigits(int value)
{
    const QString text = QString::number(value);
    return value < 10 ? QStringLiteral("0%1").arg(text) : text;
}

/// Seconds keep the fraction that the receiver sent, so no fixed width is possible.
QString paddedSeconds(double seconds)
{
    const QString text = QStringLiteral("%1").arg(seconds);
    return seconds < 10.0 ? QStringLiteral("0%1").arg(text) : text;
}

} // namespace

ControlView::ControlView(QWidget *parent)
    : ISSView(parent)
    , ui(std::make_unique<Ui::ControlView>())
    , givenParent(parent)
    , gnssInfo(GnssInfo::instance())
{
    ui->setupUi(this);
    connectModel();
    ui->radioButton_coldReset->setChecked(true);
    ui->checkBox_locGPS->setChecked(true);
    ui->checkBox_locGlonass->setChecked(true);
    checkState();
}

ControlView::~ControlView()
{
    disconnect(gnssInfo, nullptr, this, nullptr);
}

ControlView *ControlView::instance()
{
    static auto *const instance = new ControlView;
    return instance;
}

int ControlView::getState() const
{
    return gnssState;
}

QPushButton *ControlView::getStartButton() const
{
    return ui->pushButton_start;
}

QPushButton *ControlView::getResetButton() const
{
    return ui->pushButton_GpsReset;
}

void ControlView::refreshView() {}

void ControlView::on_pushButton_start_clicked()
{
    if (gnssState == kRunning) {
        gnss_stop();
        ui->label_state->setText(tr("Idle"));
        ui->pushButton_start->setText(tr("Start"));
        emit disableTimer();
        emit clear();
        emit gnssInfo->ttffUpdate();
        return;
    }
    emit clear();
    gnss_start();
    ui->label_state->setText(tr("Running"));
    ui->pushButton_start->setText(tr("Stop"));
    emit enableTimer();
}

void ControlView::on_pushButton_locTechSet_clicked()
{
    updateLocTechSet(true);
}

void ControlView::on_pushButton_GpsReset_clicked()
{
    consolePrint("on_pushButton_GpsReset_clicked.\n");
    gnss_reset(selectedResetType());
    emit clear();
    emit gnssInfo->ttffUpdate();
}

void ControlView::on_pushButton_ShowTime_clicked()
{
    showTime = true;
    showUtc();
}

void ControlView::on_pushButton_ShowLoc_clicked()
{
    showLocation = true;
    showPosition();
}

void ControlView::updateLocTechSet(bool update)
{
    Q_UNUSED(update)
    const unsigned int mask = selectedConstellations();
    const unsigned int count = countBits(mask & ConstellationMask::kCore);
    debugPrint(1, QStringLiteral("updateLocTechSet"), QStringLiteral("constl %1").arg(count));
    emit notSingleConstellation(count);
    sendCommand(constellationSentence(mask), QStringLiteral("LocTechSet"),
                QStringLiteral("restart GNSS: %1"));
    emit clear();
}

void ControlView::updateResetType(bool update)
{
    Q_UNUSED(update)
    sendCommand(resetSentence(selectedResetType()), QStringLiteral("ResetType"),
                QStringLiteral("restart GNSS: %1"));
}

void ControlView::updateLoction()
{
    if (showLocation)
        showPosition();
}

void ControlView::updateUtc()
{
    if (showTime)
        showUtc();
}

void ControlView::updateTTFF()
{
    const uint ttff = gnssInfo->getTtff();
    ui->label_TTFF->setText(ttff != 0 ? tr("TTFF: %1 seconds").arg(ttff) : tr("TTFF not avaiable"));
}

void ControlView::checkState()
{
    const bool running = gnssInfo->isDataReceived();
    gnssState = running ? kRunning : kUnknown;
    // "Runing..." is what data shows, "Running" what the button shows: the two stay apart.
    ui->label_state->setText(running ? tr("Runing...") : tr("Unknown"));
    ui->pushButton_start->setText(running ? tr("Stop") : tr("Start"));
}

void ControlView::gnss_start()
{
    sendCommand(QStringLiteral("$PPLMS,0\r\n"), QStringLiteral("GnssStatus"),
                QStringLiteral("start GNSS: %1"));
    gnssState = kRunning;
}

void ControlView::gnss_stop()
{
    sendCommand(QStringLiteral("$PPLMS,1\r\n"), QStringLiteral("GnssStatus"),
                QStringLiteral("stop GNSS: %1"));
    gnssState = kIdle;
}

void ControlView::gnss_reset(int resetType)
{
    sendCommand(resetSentence(resetType), QStringLiteral("GnssReset"),
                QStringLiteral("Reset GNSS: %1"));
}

void ControlView::connectModel()
{
    connect(gnssInfo, &GnssInfo::dataReceived, this, &ControlView::checkState);
    connect(gnssInfo, &GnssInfo::locationUpdate, this, &ControlView::updateLoction);
    connect(gnssInfo, &GnssInfo::ttffUpdate, this, &ControlView::updateTTFF);
    connect(gnssInfo, &GnssInfo::utcUpdate, this, &ControlView::updateUtc);
}

int ControlView::selectedResetType() const
{
    if (ui->radioButton_factoryReset->isChecked())
        return kFactory;
    if (ui->radioButton_coldReset->isChecked())
        return kCold;
    if (ui->radioButton_warmReset->isChecked())
        return kWarm;
    return ui->radioButton_hotReset->isChecked() ? kHot : kNoReset;
}

unsigned int ControlView::selectedConstellations() const
{
    unsigned int mask = ui->checkBox_locGPS->isChecked() ? ConstellationMask::kGps : 0;
    if (ui->checkBox_locGlonass->isChecked())
        mask |= ConstellationMask::kGlonass;
    if (ui->checkBox_locBDS->isChecked())
        mask |= ConstellationMask::kBeiDou;
    if (ui->checkBox_locQZSS->isChecked())
        mask |= ConstellationMask::kQzss;
    if (ui->checkBox_locSBAS->isChecked())
        mask |= ConstellationMask::kSbas;
    if (ui->checkBox_locGalileo->isChecked())
        mask |= ConstellationMask::kGalileo;
    return mask;
}

void ControlView::showUtc()
{
    const tUTCTime utc = gnssInfo->getUtcTime();
    ui->label_time->setText(tr("%1/%2/%3  %4:%5:%6 UTC")
                                .arg(QString::number(utc.month), QString::number(utc.day),
                                     QString::number(utc.year), twoDigits(utc.hour),
                                     twoDigits(utc.minute), paddedSeconds(utc.second)));
}

void ControlView::showPosition()
{
    const tGnssLocation location = gnssInfo->getLocation();
    // The letters are fixed; the model carries no hemisphere.
    ui->label_loc->setText(tr("%1 N %2 E").arg(location.latitude).arg(location.longitude));
}
