// SPDX-License-Identifier: MIT
#pragma once

#include "plots/Panel.h"

#include <QSize>
#include <QString>

#include <memory>
#include <vector>

class QPainter;

namespace plots {

/**
 * Panels above each other, with their vertical axes aligned, drawn to files without a display.
 *
 * @thread The main thread, under a QApplication.
 */
class Figure
{
public:
    explicit Figure(const QSize &panelSize = QSize(640, 260));

    void setTitle(const QString &title) { _title = title; }
    /// A panel at the lower end, owned by the figure.
    Panel &addPanel();
    /// Writes PATH.svg and PATH.png, the latter at twice the resolution of a screen.
    bool save(const QString &path);

private:
    QSize size() const;
    void align();
    void draw(QPainter &painter) const;

    QSize _panelSize;
    QString _title;
    std::vector<std::unique_ptr<Panel>> _panels;
};

} // namespace plots
