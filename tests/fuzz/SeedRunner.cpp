// SPDX-License-Identifier: MIT
// Stands in for libFuzzer in builds without it: runs a target once on each of the files, and the files of the folders,
// that the command line names. Options are ignored, so that both take the same command line.

#include "FuzzTarget.h"

#include <QDirIterator>
#include <QFile>

#include <cstdio>

namespace {

int run(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    const QByteArray seed = file.readAll();
    std::fprintf(stderr, "%s\n", qPrintable(path)); // the last line names the culprit
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(seed.constData()), std::size_t(seed.size()));
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    int failures = 0;
    for (int i = 1; i < argc; ++i) {
        const QString path = QFile::decodeName(argv[i]);
        if (path.startsWith('-'))
            continue;
        if (!QFileInfo(path).isDir())
            failures += run(path);
        for (QDirIterator files(path, QDir::Files); files.hasNext();)
            failures += run(files.next());
    }
    return failures == 0 ? 0 : 1;
}
