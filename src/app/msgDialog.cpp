// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#include "app/msgDialog.h"

#include "ui_msgDialog.h"

msgDialog::msgDialog(QWidget *parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::msgDialog>())
{
    ui->setupUi(this);
    connect(ui->buttonBox, &QDialogButtonBox::clicked, this, &msgDialog::bt_clicked);
}

msgDialog::~msgDialog() = default;

void msgDialog::setText(const QString &text)
{
    ui->Text->setText(text);
}

void msgDialog::bt_clicked(QAbstractButton *)
{
    done(Rejected);
}
