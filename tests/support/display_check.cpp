// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// display-check: ends with 0 when its environment leads a Qt program to a screen, otherwise with 1.

#include <QGuiApplication>

#include <csignal>
#include <cstdlib>

int main(int argc, char **argv)
{
    // How Qt ends a program that finds no display.
    static_cast<void>(std::signal(SIGABRT, [](int /*number*/) { std::_Exit(1); }));
    const QGuiApplication application(argc, argv);
    return QGuiApplication::primaryScreen() ? 0 : 1;
}
