// SPDX-FileCopyrightText: 2026 The TavrinViewer authors
// SPDX-License-Identifier: Apache-2.0

// What painting the satellite widgets with a full list costs, at the sizes that they have in the
// real viewer on a small and on a large screen, and as a ratio to filling as many pixels with a
// colour, which is the least that any painting does.

#include "support/Pages.h"
#include "support/ViewerProcess.h"
#include "views/Radar.h"
#include "views/SatBar.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <limits>

namespace {

constexpr int kRounds = 40;
constexpr int kPaints = 25;
constexpr QSize kScreens[] = {{800, 480}, {1920, 1080}};
const QString kViewSwitch = QStringLiteral("pushButton_viewSwitch");
const QString kBarsClass = QStringLiteral("SatBar");
const QString kPlotClass = QStringLiteral("Radar");

/// All over the sky and the scale, used and unused, with numbers of one to three digits.
void fillList(SVInfoViewer &widget)
{
    tSvInfo list[kMaxSatellites];
    for (int i = 0; i < kMaxSatellites; ++i)
        list[i] = {1 + 9 * i, 40.0 * i, 2.0 + 2.7 * i, 20.0 + i, i % 4 != 0};
    widget.setSvInfo(list, kMaxSatellites);
}

struct tSizes
{
    QSize bars;
    QSize plot;
};

/// Sizes in the viewer on a screen, empty ones when it does not run.
tSizes sizesOn(QSize screen)
{
    ViewerProcess viewer(screen);
    tSizes sizes;
    if (!viewer.start())
        return sizes;
    sizes.bars = viewer.rect(Pages::kSatellite, kBarsClass).size();
    if (viewer.press(Pages::kSatellite, kViewSwitch)) {
        QElapsedTimer timer;
        for (timer.start(); sizes.plot.width() < sizes.bars.width() && timer.elapsed() < 10000;)
            sizes.plot = viewer.rect(Pages::kSatellite, kPlotClass).size();
    }
    return sizes;
}

double millisecondsEach(const std::function<void()> &paint)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < kPaints; ++i)
        paint();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6 / kPaints;
}

/// Paints in turns with filling, so that a busy moment hits both; prints the best of each.
void report(SVInfoViewer &widget, QSize screen, QSize size, QTextStream &out)
{
    fillList(widget);
    widget.resize(size);
    widget.show();
    QImage image(size, QImage::Format_RGB32);
    double best = std::numeric_limits<double>::max();
    double fill = std::numeric_limits<double>::max();
    for (int round = 0; round < kRounds; ++round) {
        fill = std::min(fill, millisecondsEach([&] { image.fill(Qt::lightGray); }));
        best = std::min(best, millisecondsEach([&] { widget.render(&image); }));
    }
    out << "| " << widget.metaObject()->className() << " | " << screen.width() << "x"
        << screen.height() << " | " << size.width() << "x" << size.height() << " | "
        << QString::number(best, 'f', 3) << " | " << QString::number(best / fill, 'f', 1) << " |\n"
        << Qt::flush;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QTextStream out(stdout);
    out << kMaxSatellites << " satellites, best of " << kRounds << " rounds\n\n"
        << "| widget | screen | its size | ms a paint | x filling |\n|---|---|---|---:|---:|\n"
        << Qt::flush;
    for (const QSize screen : kScreens) {
        const tSizes sizes = sizesOn(screen);
        if (sizes.bars.isEmpty() || sizes.plot.isEmpty()) {
            QTextStream(stderr) << "paint: the viewer did not show its satellites\n";
            return 1;
        }
        SatBar bars;
        report(bars, screen, sizes.bars, out);
        Radar plot;
        report(plot, screen, sizes.plot, out);
    }
    return 0;
}
