// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/ISSView.h"

ISSView::ISSView(QWidget *parent)
    : QWidget(parent)
{
}

void ISSView::refreshView() {}
