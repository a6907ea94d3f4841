// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>

#include <vector>

using Channels = std::vector<unsigned char>;
Q_DECLARE_METATYPE(Channels)

/// The rows of an impedance test: both ways to link channels, under both kinds of control.
inline void addLinkedGroups()
{
    QTest::addColumn<Channels>("channels");
    QTest::addColumn<bool>("bipolar");
    QTest::addColumn<bool>("galvanostatic");
    for (const bool galvanostatic : {false, true}) {
        const char *control = galvanostatic ? "galvanostatic" : "potentiostatic";
        QTest::addRow("%s, four in parallel", control) << Channels{0, 1, 2, 3} << false << galvanostatic;
        QTest::addRow("%s, bipolar pair", control) << Channels{0, 1} << true << galvanostatic;
    }
}
