#include "plots/Impedance.h"

#include "plots/Figure.h"
#include "plots/RunData.h"
#include "plots/Series.h"

#include <QDir>

#include <algorithm>

namespace client {

namespace {

constexpr std::size_t mostNamed = 8;

/// The points of one sweep over the frequencies.
struct Sweep {
    QString name;
    QVector<QPointF> nyquist;   ///< real part, minus imaginary part
    QVector<QPointF> magnitude; ///< over frequency
    QVector<QPointF> phase;     ///< over frequency
};

std::vector<Sweep> sweepsOf(const Table &ac)
{
    const Column &frequency = ac.column("Frequency / Hz");
    const Column &step = ac.column("Step Count / 1");
    const Column &cycle = ac.column("Cycle Count / 1");
    std::vector<Sweep> sweeps;
    for (std::size_t row = 0; row < frequency.size(); ++row) {
        if (row == 0 || step[row] != step[row - 1] || cycle[row] != cycle[row - 1]) {
            const double bias = ac.column("Voltage Bias / V")[row];
            sweeps.push_back({QStringLiteral("%1 V").arg(QString::number(bias, 'g', 3)), {}, {}, {}});
        }
        Sweep &sweep = sweeps.back();
        sweep.nyquist.append({ac.column("Real Impedance / Ohm")[row], -ac.column("Imaginary Impedance / Ohm")[row]});
        sweep.magnitude.append({frequency[row], ac.column("Absolute Impedance / Ohm")[row]});
        sweep.phase.append({frequency[row], ac.column("Phase / deg")[row]});
    }
    return sweeps;
}

void addCurves(Panel &panel, const std::vector<Sweep> &sweeps, QVector<QPointF> Sweep::*points, bool isNamed)
{
    int index = 0;
    for (const Sweep &sweep : sweeps)
        panel.addCurve(isNamed ? sweep.name : QString(), sweep.*points, curveColour(index++),
                       Panel::Style::LineAndPoints);
    if (isNamed)
        panel.showLegend();
}

bool isLegible(const std::vector<Sweep> &sweeps)
{
    return sweeps.size() > 1 && sweeps.size() <= mostNamed;
}

bool drawNyquist(const RunData &run, const std::vector<Sweep> &sweeps, const QString &path)
{
    Figure figure(QSize(640, 420));
    figure.setTitle(run.title);
    Panel &panel = figure.addPanel();
    const double largest = std::max(largestMagnitude(run.ac.column("Real Impedance / Ohm")),
                                    largestMagnitude(run.ac.column("Imaginary Impedance / Ohm")));
    panel.setHorizontalScale(prefixedScale(QStringLiteral("Re Z"), QString::fromUtf8(u8"Ω"), largest));
    panel.setVerticalScale(prefixedScale(QString::fromUtf8(u8"−Im Z"), QString::fromUtf8(u8"Ω"), largest));
    addCurves(panel, sweeps, &Sweep::nyquist, isLegible(sweeps));
    panel.makeAxesEqual();
    return figure.save(path);
}

bool drawBode(const RunData &run, const std::vector<Sweep> &sweeps, const QString &path)
{
    Figure figure;
    figure.setTitle(run.title);
    Panel &magnitude = figure.addPanel();
    Panel &phase = figure.addPanel();
    for (Panel *panel : {&magnitude, &phase}) {
        panel->setHorizontalScale({1.0, QStringLiteral("Frequency / Hz")});
        panel->makeLogarithmic(QwtPlot::xBottom);
    }
    magnitude.setVerticalScale({1.0, QString::fromUtf8(u8"|Z| / Ω")});
    magnitude.makeLogarithmic(QwtPlot::yLeft);
    phase.setVerticalScale({1.0, QString::fromUtf8(u8"Phase / °")});
    addCurves(magnitude, sweeps, &Sweep::magnitude, isLegible(sweeps));
    addCurves(phase, sweeps, &Sweep::phase, false);
    magnitude.hideHorizontalTitle();
    return figure.save(path);
}

} // namespace

bool drawImpedance(const RunData &run, const QString &folder)
{
    const std::vector<Sweep> sweeps = sweepsOf(run.ac);
    if (sweeps.empty())
        return true;
    const QDir directory(folder);
    const bool isNyquistDrawn = drawNyquist(run, sweeps, directory.filePath(QStringLiteral("nyquist")));
    return drawBode(run, sweeps, directory.filePath(QStringLiteral("bode"))) && isNyquistDrawn;
}

} // namespace client
