// SPDX-License-Identifier: MIT
#include "support/ProcessFigures.h"

#include <QDir>
#include <QFile>

#include <algorithm>

#include <malloc.h>
#include <unistd.h>

#ifndef __has_feature
#define __has_feature(feature) 0 // clang's alone
#endif

namespace {

constexpr bool isUnderSanitizer = __has_feature(thread_sanitizer) || __has_feature(address_sanitizer);

int entries(const char *folder)
{
    return QDir(QLatin1String(folder)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

int ProcessFigures::threads()
{
    return entries("/proc/self/task");
}

int ProcessFigures::openFiles()
{
    return entries("/proc/self/fd") - 1; // the one that reads the folder
}

int ProcessFigures::openings(const QString &path)
{
    const QFileInfoList files = QDir(QStringLiteral("/proc/self/fd")).entryInfoList(QDir::AllEntries | QDir::System);
    return int(
        std::count_if(files.begin(), files.end(), [&](const QFileInfo &file) { return file.symLinkTarget() == path; }));
}

qint64 ProcessFigures::heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

double ProcessFigures::residentMegabytes()
{
    if (isUnderSanitizer)
        return 0.0;
    malloc_trim(0);
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0.0;
    return statm.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
}
