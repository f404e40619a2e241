// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcess>

#include <csignal>

#include <sys/prctl.h>

/// A program that ends with the test that started it, however that ends. One that is left behind
/// would read from the pipes and terminals of later tests.
class BoundProcess : public QProcess
{
public:
    using QProcess::QProcess;

protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};
