// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

/// Base of the control, configuration, log and satellite pages. It has no meta-object of its own:
/// it adds neither signals nor slots. User-interface thread.
class ISSView : public QWidget
{
public:
    explicit ISSView(QWidget *parent = nullptr);

    /// Hook for a page to redraw what it shows. Nothing calls it; every page's is empty.
    virtual void refreshView();
};
