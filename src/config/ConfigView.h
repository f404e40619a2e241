// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app/ISSView.h"

#include <memory>

namespace Ui {
class ConfigView;
}

/// Page on which the log settings are edited, the receiver's memory is stored and the version is
/// shown. Edits stay in the widgets until they are saved. User-interface thread.
class ConfigView : public ISSView
{
    Q_OBJECT

public:
    explicit ConfigView(QWidget *parent = nullptr);
    ~ConfigView() override;

    /// A page of its own besides the one in the main window: made on first use, without parent,
    /// never destroyed. The satellite page asks for it.
    static ConfigView *instance();

public slots:
    /// Saves all settings of the Log tab, if any was edited since they were last loaded or saved.
    void on_pushButton_logOK_clicked();
    /// Drops the edits.
    void on_pushButton_logCancel_clicked();
    /// Lets the user choose the log directory.
    void on_pushButton_logPathOpen_clicked();
    /// Asks the receiver to store its memory.
    void on_pushButton_nvmStore_clicked();
    void on_tabWidget_currentChanged(int index);
    /// Asks whether edits are to be saved when another tab than the current one is pressed, also
    /// none (-1), before the tab changes. A "Yes" saves the directory only: a half-made choice of
    /// switches is taken over by the OK button alone.
    void on_tabWidget_tabBarClicked(int index);
    void on_lineEdit_logPath_textEdited(const QString &arg1);
    void on_checkBox_insertTimeStamp_clicked();
    void on_checkBox_debugText_clicked();
    void on_checkBox_debugNav_clicked();
    /// Leaves a trace at a level that is not printed, nothing else.
    void changesetting(bool);

private:
    /// Shows the settings held in memory.
    void loadSettings();
    /// Takes the directory from the widgets and writes the settings to their file.
    void saveDirectory();

    std::unique_ptr<Ui::ConfigView> ui;
    bool modified = false; ///< the Log tab holds edits that were not saved
    qint32 currentTab = 0; ///< tab index last reported
};
