// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QtTest>

/**
 * Moves the home folder of this process into a fresh temporary folder, so that a test reads and writes no document of
 * the user's. The folder goes with the object.
 */
class IsolatedHome
{
public:
    IsolatedHome();

    /// What QStandardPaths::DocumentsLocation answers from now on; the folder exists.
    QString documents() const;

private:
    QTemporaryDir _home;
};

/// The main function of a test program: isolated home folder, event loop, one test class.
#define NIMBRELLE_TEST_MAIN(TestClass)                                                                                 \
    int main(int argc, char **argv)                                                                                    \
    {                                                                                                                  \
        const IsolatedHome home;                                                                                       \
        QCoreApplication application(argc, argv);                                                                      \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
