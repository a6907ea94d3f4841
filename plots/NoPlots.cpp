// Stands in for the pictures where Qt's GUI is not at hand.
#include "plots/RunPlots.h"

#include <QCoreApplication>

namespace plots {

std::unique_ptr<QCoreApplication> makeDrawingApplication(int &argc, char **argv)
{
    return std::make_unique<QCoreApplication>(argc, argv);
}

Drawing drawRun(const QString &)
{
    return {false, {QStringLiteral("this build of the program draws no pictures")}};
}

} // namespace plots
