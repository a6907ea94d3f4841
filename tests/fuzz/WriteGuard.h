// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/**
 * While it lives, this process creates, writes to and removes no file outside of one folder: the first attempt ends it.
 *
 * It watches the calls that Qt makes of the C library, so names that lead out of the folder by any way are seen: "..",
 * an absolute path, or one that the working folder completes.
 *
 * @thread One guard at a time, for all threads.
 */
class WriteGuard
{
public:
    explicit WriteGuard(const QString &folder);
    ~WriteGuard();
    WriteGuard(const WriteGuard &) = delete;
    WriteGuard &operator=(const WriteGuard &) = delete;
};
