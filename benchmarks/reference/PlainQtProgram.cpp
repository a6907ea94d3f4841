// SPDX-License-Identifier: MIT
// The least that a program on Qt Core can be: what its start costs no other one can save.

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QTextStream(stdout) << "plain-qt-program 1.0.0\n";
    return 0;
}
