// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigView.h"

#include "config/ConfigFile.h"
#include "config/DebugOutput.h"
#include "control/CommandChannel.h"
#include "ui_ConfigView.h"

#include <QFileDialog>
#include <QMessageBox>

namespace {

// From a form that had more tabs; no tab of this one has that index.
constexpr int kReloadingTab = 5;

} // namespace

ConfigView::ConfigView(QWidget *parent)
    : ISSView(parent)
    , ui(std::make_unique<Ui::ConfigView>())
{
    ui->setupUi(this);
    loadSettings();
}

ConfigView::~ConfigView() = default;

ConfigView *ConfigView::instance()
{
    static auto *const instance = new ConfigView;
    return instance;
}

void ConfigView::on_pushButton_logOK_clicked()
{
    if (!modified)
        return;
    ConfigFile::instance()->setDisplayTime(ui->checkBox_insertTimeStamp->isChecked());
    ConfigSettings *settings = ConfigFile::instance()->settings();
    settings->textDebug = ui->checkBox_debugText->isChecked();
    settings->navDebug = ui->checkBox_debugNav->isChecked();
    saveDirectory();
    modified = false;
}

void ConfigView::on_pushButton_logCancel_clicked()
{
    loadSettings();
    modified = false;
}

void ConfigView::on_pushButton_logPathOpen_clicked()
{
    const QString directory = QFileDialog::getExistingDirectory(
        this, tr("Find Files"), ui->lineEdit_logPath->text(), QFileDialog::ShowDirsOnly);
    if (directory.isEmpty())
        return;
    ui->lineEdit_logPath->setText(directory);
    modified = true;
}

void ConfigView::on_pushButton_nvmStore_clicked()
{
    sendNvmStore();
}

void ConfigView::on_tabWidget_currentChanged(int index)
{
    currentTab = index;
    if (index == kReloadingTab)
        loadSettings();
}

void ConfigView::on_tabWidget_tabBarClicked(int index)
{
    if (index == currentTab)
        return;
    if (modified && QMessageBox::question(this, tr("Configuration changed"), tr("Save changes?"),
                                          QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes)
        saveDirectory();
    modified = false;
}

void ConfigView::on_lineEdit_logPath_textEdited(const QString &)
{
    modified = true;
}

void ConfigView::on_checkBox_insertTimeStamp_clicked()
{
    modified = true;
}

void ConfigView::on_checkBox_debugText_clicked()
{
    modified = true;
}

void ConfigView::on_checkBox_debugNav_clicked()
{
    modified = true;
}

void ConfigView::changesetting(bool)
{
    debugPrint(3, QStringLiteral("Config"), QStringLiteral("changesetting"));
    if (!sender())
        debugPrint(3, QStringLiteral("Config"), QStringLiteral("unitsChanged: no sender found"));
}

void ConfigView::loadSettings()
{
    const ConfigSettings *settings = ConfigFile::instance()->settings();
    ui->lineEdit_logPath->setText(settings->directoryText());
    ui->checkBox_debugText->setChecked(settings->textDebug);
    ui->checkBox_debugNav->setChecked(settings->navDebug);
    ui->checkBox_insertTimeStamp->setChecked(settings->displayTime);
}

void ConfigView::saveDirectory()
{
    ConfigFile::instance()->setDirectory(ui->lineEdit_logPath->text().toLocal8Bit().constData());
    ConfigFile::instance()->write();
}
