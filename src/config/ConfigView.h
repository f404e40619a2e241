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

private:
    /// Shows the settings held in memory.
    void loadSettings();

    std::unique_ptr<Ui::ConfigView> ui;
    bool modified = false; ///< the Log tab holds edits that were not saved
    qint32 currentTab = 0; ///< tab index last reported
};
