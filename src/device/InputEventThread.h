// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QThread>

/// Watches the device's hardware keys and reports the home key. Runs without an event loop until
/// the device ends or cannot be read.
///
/// The object lives on the user-interface thread.
class InputEventThread : public QThread
{
    Q_OBJECT

public:
    explicit InputEventThread(QObject *parent = nullptr);
    /// Stops the thread, waits for it and closes the device.
    ~InputEventThread() override;

    InputEventThread(const InputEventThread &) = delete;
    InputEventThread &operator=(const InputEventThread &) = delete;

    /// Ends the thread at once, whether it waits for a key or for somebody who writes keys, and
    /// also when it has not started yet. Any thread.
    void requestStop();

signals:
    void getEvent(); ///< the home key was released

protected:
    void run() override;

private:
    bool waitForInput() const;
    void readKeys();
    void handleEvent(quint16 type, quint16 code, qint32 value);

    int descriptor = -1; ///< of the key device; stays open after the thread's end
    int stopDescriptor;  ///< an eventfd, readable for good once a stop was asked for
};
