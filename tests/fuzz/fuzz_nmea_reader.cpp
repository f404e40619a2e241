// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The reader under libFuzzer: no input may make it fail, or publish what depends on how the input
// was cut into reads.

#include "support/ReadSizes.h"

#include <QLoggingCategory>
#include <QTextCodec>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void drop(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString & /*text*/) {}

void prepareOnce()
{
    static const bool prepared = [] {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
        qInstallMessageHandler(drop);
        return true;
    }();
    Q_UNUSED(prepared)
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    prepareOnce();
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    // Trace lines are built from the input as well, and cost the most: every second length has
    // them.
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, size % 2 == 0);
    const QString fault = ReadSizes::fault(bytes);
    if (!fault.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(fault));
        std::abort();
    }
    return 0;
}
