// SPDX-License-Identifier: MIT
#include "WriteGuard.h"

#include "FuzzTarget.h"

#include <QFile>

#include <cstdarg>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

QByteArray allowedFolder; // empty: no guard

void mustBeAllowed(const char *path)
{
    if (allowedFolder.isEmpty())
        return;
    const QByteArray wanted = QByteArray(path) + '/';
    mustHold(wanted.startsWith(allowedFolder) && !wanted.contains("/../"), "no name leads out of its folder");
}

int openGuarded(const char *path, int flags, va_list arguments)
{
    if (flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC))
        mustBeAllowed(path);
    const int mode = flags & O_CREAT ? va_arg(arguments, int) : 0;
    return int(syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}

} // namespace

WriteGuard::WriteGuard(const QString &folder)
{
    allowedFolder = QFile::encodeName(folder) + '/';
}

WriteGuard::~WriteGuard()
{
    allowedFolder.clear();
}

// These take the place of the C library's functions in the whole process.
extern "C" {

__attribute__((visibility("default"))) int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int descriptor = openGuarded(path, flags, arguments);
    va_end(arguments);
    return descriptor;
}

__attribute__((visibility("default"))) int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const int descriptor = openGuarded(path, flags | O_LARGEFILE, arguments);
    va_end(arguments);
    return descriptor;
}

__attribute__((visibility("default"))) int mkdir(const char *path, mode_t mode) noexcept
{
    mustBeAllowed(path);
    return int(syscall(SYS_mkdirat, AT_FDCWD, path, mode));
}

__attribute__((visibility("default"))) int unlink(const char *path) noexcept
{
    mustBeAllowed(path);
    return int(syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

__attribute__((visibility("default"))) int rename(const char *from, const char *to) noexcept
{
    mustBeAllowed(from);
    mustBeAllowed(to);
    return int(syscall(SYS_renameat, AT_FDCWD, from, AT_FDCWD, to));
}

} // extern "C"
