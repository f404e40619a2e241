// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// The precompiled header of the tests hangs on the target that this file makes.
