// SPDX-License-Identifier: MIT
#include "plots/Figure.h"

#include "plots/Fonts.h"

#include <qwt_painter.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_draw.h>

#include <QImage>
#include <QPainter>
#include <QSvgGenerator>

#include <algorithm>

namespace plots {

namespace {

constexpr int margin = 12;
constexpr int panelGap = 10;
constexpr int titleHeight = 26;
constexpr int pixelRatio = 2;

} // namespace

Figure::Figure(const QSize &panelSize) : _panelSize(panelSize)
{
}

Panel &Figure::addPanel()
{
    _panels.push_back(std::make_unique<Panel>());
    _panels.back()->resize(_panelSize);
    return *_panels.back();
}

bool Figure::save(const QString &path)
{
    align();
    QSvgGenerator svg;
    svg.setFileName(path + QLatin1String(".svg"));
    svg.setSize(size());
    svg.setViewBox(QRect(QPoint(), size()));
    svg.setResolution(_panels.front()->logicalDpiX());
    svg.setTitle(_title.toHtmlEscaped()); // which is written as it is
    QPainter vectorPainter;
    const bool isVectorReady = vectorPainter.begin(&svg);
    if (isVectorReady)
        draw(vectorPainter);
    const bool isVectorWritten = isVectorReady && vectorPainter.end();

    QImage image(size() * pixelRatio, QImage::Format_RGB32);
    image.fill(Qt::white);
    image.setDevicePixelRatio(pixelRatio);
    QPainter painter(&image);
    draw(painter);
    painter.end();
    return image.save(path + QLatin1String(".png")) && isVectorWritten;
}

QSize Figure::size() const
{
    const int count = static_cast<int>(_panels.size());
    const int title = _title.isEmpty() ? 0 : titleHeight;
    return {_panelSize.width() + 2 * margin, _panelSize.height() * count + panelGap * (count - 1) + 2 * margin + title};
}

/// Gives all coordinate systems the left edge of the one that lies farthest to the right.
void Figure::align()
{
    double farthest = 0.0;
    for (const auto &panel : _panels)
        farthest = std::max(farthest, panel->canvasArea().left());
    for (const auto &panel : _panels) {
        QwtScaleDraw *draw = panel->axisScaleDraw(QwtPlot::yLeft);
        const double extent = draw->extent(panel->axisFont(QwtPlot::yLeft));
        draw->setMinimumExtent(extent + farthest - panel->canvasArea().left());
        panel->canvasArea(); // the axes know their new lengths before they are drawn
    }
}

void Figure::draw(QPainter &painter) const
{
    painter.fillRect(QRect(QPoint(), size()), Qt::white);
    QRectF area(margin, margin, _panelSize.width(), _panelSize.height());
    if (!_title.isEmpty()) {
        painter.setPen(Qt::black);
        painter.setFont(pictureFont(11, QFont::DemiBold));
        const QString title = painter.fontMetrics().elidedText(_title.simplified(), Qt::ElideRight, _panelSize.width());
        painter.drawText(QRectF(margin, margin / 2.0, _panelSize.width(), titleHeight), Qt::AlignCenter, title);
        area.translate(0, titleHeight);
    }
    QwtPainter::setRoundingAlignment(false); // whole pixels of a screen would turn slopes into stairs
    QwtPlotRenderer renderer;
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
    renderer.setLayoutFlag(QwtPlotRenderer::FrameWithScales);
    for (const auto &panel : _panels) {
        renderer.render(panel.get(), &painter, area);
        area.translate(0, area.height() + panelGap);
    }
}

} // namespace plots
