// SPDX-License-Identifier: MIT
#include "plots/PlotModule.h"

#include "plots/RunPlots.h"

#include <QCoreApplication>

namespace plots {

class LoadedPlots : public QObject, public PlotModule
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID NIMBRELLE_PLOT_MODULE)
    Q_INTERFACES(plots::PlotModule)

public:
    std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv) override
    {
        return makeDrawingApplication(argc, argv);
    }
    Drawing drawRun(const QString &folder) override { return plots::drawRun(folder); }
};

} // namespace plots

#include "PlotModule.moc"
