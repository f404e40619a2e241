// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

/// Object names of the viewer's pages and of the buttons that show them.
namespace Pages {

inline const QString kWindow = QStringLiteral("MainWindow");
inline const QString kSatellite = QStringLiteral("SVView");
inline const QString kControl = QStringLiteral("ControlView");
inline const QString kTtff = QStringLiteral("TTFFTester");
inline const QString kLog = QStringLiteral("LogView");
inline const QString kConfig = QStringLiteral("ConfigView");

inline const QString kSatelliteButton = QStringLiteral("pushButton_svState");
inline const QString kControlButton = QStringLiteral("pushButton_control");
inline const QString kTtffButton = QStringLiteral("pushButton_ttff");
inline const QString kLogButton = QStringLiteral("pushButton_logging");
inline const QString kConfigButton = QStringLiteral("pushButton_config");
inline const QString kMinimizeButton = QStringLiteral("pushButton_minimize");
inline const QString kExitButton = QStringLiteral("pushButton_exit");

} // namespace Pages
