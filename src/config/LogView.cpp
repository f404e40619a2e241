// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/LogView.h"

#include "config/ConfigFile.h"
#include "config/LogFiles.h"
#include "gnss/GnssInfo.h"
#include "ui_LogView.h"

#include <QScrollBar>
#include <QTextCursor>

namespace {

constexpr int kUpdatesShown = 3;
// A burst of a megabyte would keep the window from its other events for a second and more.
constexpr int kSliceLength = 32 * 1024;

/// Length of what can be laid out in one go, whole lines where there are any.
int sliceLength(const QString &text)
{
    if (text.size() <= kSliceLength)
        return text.size();
    const int lineEnd = text.lastIndexOf(QLatin1Char('\n'), kSliceLength - 1);
    return lineEnd < 0 ? kSliceLength : lineEnd + 1;
}

} // namespace

LogView::LogView(QWidget *parent)
    : ISSView(parent)
    , ui(std::make_unique<Ui::LogView>())
    , gnssInfo(GnssInfo::instance())
    , logFiles(LogFiles::instance())
{
    ui->setupUi(this);
    ui->comboBox_logType->addItem(QStringLiteral("NMEA"));
    ui->comboBox_logType->setCurrentIndex(0);
    ui->lineEdit->setText(QString::fromLocal8Bit(ConfigFile::instance()->settings()->directory));
    sliceTimer.setSingleShot(true);
    connect(&sliceTimer, &QTimer::timeout, this, &LogView::showNextSlice);
}

LogView::~LogView() = default;

void LogView::refreshView() {}

void LogView::updateLogView()
{
    // What the reading thread adds between these two calls is shown and logged by nobody.
    const QString text = gnssInfo->getNmeaData();
    gnssInfo->clearNmeaData();

    if (updateCount % kUpdatesShown == 0) {
        ui->textEdit->clear();
        waitingText.clear();
    }
    appendParagraph(text);
    update();
    ++updateCount;
    logText(text);
}

void LogView::on_checkBox_clicked() {}

void LogView::appendParagraph(const QString &text)
{
    if (!waitingText.isEmpty() || !ui->textEdit->document()->isEmpty())
        waitingText += QLatin1Char('\n');
    waitingText += text;
    showNextSlice();
}

// Not QTextEdit::append(): that takes noise with a "<" in it for HTML and loses it.
void LogView::showNextSlice()
{
    QScrollBar *const scrollBar = ui->textEdit->verticalScrollBar();
    const bool atEnd = scrollBar->value() == scrollBar->maximum();
    QTextCursor cursor(ui->textEdit->document());
    cursor.movePosition(QTextCursor::End);
    const int length = sliceLength(waitingText);
    cursor.insertText(waitingText.left(length));
    waitingText.remove(0, length);
    if (atEnd)
        scrollBar->setValue(scrollBar->maximum());
    if (!waitingText.isEmpty())
        sliceTimer.start(0);
}

void LogView::logText(const QString &text)
{
    if (!ui->checkBox->isChecked()) {
        logFiles->closeNmeaLog();
        return;
    }
    logFiles->prepareDirectory();
    logFiles->openNmeaLog();
    logFiles->writeNmea(text.toLatin1().constData());
}
