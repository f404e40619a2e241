// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>

/// The child of that class, and of that name where one is given. Without it no test can go on: the
/// program ends with a message.
template<typename T>
T *childOf(const QObject &parent, const char *name = nullptr)
{
    auto *const found = parent.findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name ? name : T::staticMetaObject.className());
    return found;
}
