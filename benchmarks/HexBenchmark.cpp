// SPDX-License-Identifier: MIT
// Reading a firmware image.

#include "TableRow.h"
#include "images/HexLoader.h"
#include "reference/PlainHexText.h"

#include <benchmark/benchmark.h>

#include <QTemporaryFile>

#include <random>

namespace {

constexpr int textSize = 500 * 1000;

QByteArray recordLine(int address, std::mt19937 &random)
{
    QByteArray record;
    record.append(char(16)).append(char(address >> 8)).append(char(address)).append('\0');
    for (int i = 0; i < 16; ++i)
        record.append(char(random()));
    return ':' + record.append(char(-std::accumulate(record.begin(), record.end(), 0))).toHex().toUpper() + '\n';
}

QByteArray image()
{
    std::mt19937 random(20260101u);
    QByteArray text;
    for (int address = 0; text.size() < textSize; address += 16)
        text += recordLine(address, random);
    return text + ":00000001FF\n;12AB\n;ALDER\n";
}

} // namespace

int main(int argc, char **argv)
{
    QTemporaryFile file;
    if (!file.open() || file.write(image()) < textSize || !file.flush())
        qFatal("The image cannot be written");
    const QString path = file.fileName();
    TableRow row("HEX image of 500 KB", "the same rules with QRegExp", {Aim::TimesFasterAtLeast, 20});
    row.addCase(
        "HEX image", [path] { benchmark::DoNotOptimize(HexLoader::ReadFile(path)); },
        [path] { benchmark::DoNotOptimize(plainHexFile(path)); });
    return measureRows(argc, argv, {&row});
}
