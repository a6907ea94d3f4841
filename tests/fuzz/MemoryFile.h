// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

/// A file that lives in memory and has a path, for code that reads files: thousands a second are written and read.
class MemoryFile
{
public:
    MemoryFile() : _descriptor(::memfd_create("fuzz", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(_descriptor); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    /// Replaces the contents. @return the path
    QString write(const QByteArray &contents)
    {
        const bool isWritten =
            ::ftruncate(_descriptor, 0) == 0 &&
            ::pwrite(_descriptor, contents.constData(), std::size_t(contents.size()), 0) == contents.size();
        if (!isWritten)
            qFatal("a file in memory cannot be written");
        return QStringLiteral("/proc/self/fd/%1").arg(_descriptor);
    }

private:
    int _descriptor;
};
