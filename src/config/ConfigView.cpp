// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "config/ConfigView.h"

#include "config/ConfigFile.h"

#include "ui_ConfigView.h"

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

void ConfigView::loadSettings()
{
    const ConfigSettings *settings = ConfigFile::instance()->settings();
    ui->lineEdit_logPath->setText(QString::fromLocal8Bit(settings->directory));
    ui->checkBox_debugText->setChecked(settings->textDebug);
    ui->checkBox_debugNav->setChecked(settings->navDebug);
    ui->checkBox_insertTimeStamp->setChecked(settings->displayTime);
}
