// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDialog>

#include <memory>

class QAbstractButton;

namespace Ui {
class msgDialog;
}

/// A small message box in the device's style: one line of text, a close mark and an Abort button.
/// Whoever needs it gives it a text and runs it modally. User-interface thread.
class msgDialog : public QDialog
{
    Q_OBJECT

public:
    explicit msgDialog(QWidget *parent = nullptr);
    ~msgDialog() override;

    /// The message, one line of large letters.
    void setText(const QString &text);

private slots:
    /// Ends the dialog with the result Rejected, whichever button it was.
    void bt_clicked(QAbstractButton *button);

private:
    std::unique_ptr<Ui::msgDialog> ui;
};
