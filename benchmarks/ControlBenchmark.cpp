#include "Common/Utf8.h"
#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "Ratio.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <memory>
#include <random>
#include <string>
#include <vector>

/// Points through a custom planar map of 64 x 64 nodes, both ways, against one bilinear evaluation of the same nodes by
/// a caller who knows their even grid.

namespace {

using P2 = Point<double, 2>;

constexpr std::size_t NODES = 64;
constexpr double WIDTH = 1920;
constexpr double HEIGHT = 1200;
constexpr std::size_t POINT_COUNT = 10000;
/// What is accepted; the aims are 2 and 4.
constexpr double FORWARD_LIMIT = 2.2;
constexpr double INVERSE_LIMIT = 6;

/// Bent and sheared, as a screen is seen by a projector from the side.
P2 warped(double s, double t) {
    return {0.1 + 0.75 * s + 0.08 * std::sin(3 * t) * (0.5 + s),
            0.05 + 0.7 * t + 0.12 * s * s + 0.03 * std::sin(5 * s)};
}

double partOf(std::size_t index) {
    return static_cast<double>(index) / static_cast<double>(NODES - 1);
}

std::vector<P2> screenNodes() {
    std::vector<P2> nodes;
    for (std::size_t row = 0; row < NODES; ++row) {
        for (std::size_t column = 0; column < NODES; ++column) {
            nodes.push_back(warped(partOf(column), partOf(row)));
        }
    }
    return nodes;
}

CustomPlanarScreenToChannelMap loadMap() {
    std::string folder = "/tmp/control-benchmark-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(2);
    }
    const std::string file = folder + "/mesh.data";
    {
        std::ofstream out(file);
        out << std::setprecision(17) << "2\n" << NODES << ' ' << NODES << '\n';
        const std::vector<P2> nodes = screenNodes();
        for (std::size_t node = 0; node < nodes.size(); ++node) {
            out << 1.6 * (2 * partOf(node % NODES) - 1) << ' ' << 2 * partOf(node / NODES) - 1 << ' ' << nodes[node][0]
                << ' ' << nodes[node][1] << " 1\n";
        }
        out << "pixels " << WIDTH << ' ' << HEIGHT << '\n';
    }
    CustomPlanarScreenToChannelMap map(Veltrani::fromUtf8(file), nullptr);
    std::remove(file.c_str());
    std::remove(folder.c_str());
    return map;
}

/// One bilinear evaluation: the cell of an even grid, the place in it and the mean of its four corners.
class Reference {
public:
    bool evaluate(const P2& pixel, P2& out) const {
        const double x = pixel[0] * (static_cast<double>(NODES - 1) / WIDTH);
        const double y = pixel[1] * (static_cast<double>(NODES - 1) / HEIGHT);
        if (!(x >= 0 && y >= 0 && x <= NODES - 1 && y <= NODES - 1)) {
            return false;
        }
        const std::size_t column = std::min(static_cast<std::size_t>(x), NODES - 2);
        const std::size_t row = std::min(static_cast<std::size_t>(y), NODES - 2);
        const double a = x - static_cast<double>(column);
        const double b = y - static_cast<double>(row);
        const P2* const node = &m_nodes[row * NODES + column];
        for (std::size_t i = 0; i < 2; ++i) {
            out[i] = (1 - b) * ((1 - a) * node[0][i] + a * node[1][i]) +
                     b * ((1 - a) * node[NODES][i] + a * node[NODES + 1][i]);
        }
        return true;
    }

private:
    std::vector<P2> m_nodes = screenNodes();
};

/// Random pixels of the whole picture and where they lie on the screen.
struct Points {
    std::vector<P2> pixels;
    std::vector<P2> screen;

    explicit Points(const CustomPlanarScreenToChannelMap& map) {
        std::mt19937 random(3);
        std::uniform_real_distribution<double> x(0.0, WIDTH);
        std::uniform_real_distribution<double> y(0.0, HEIGHT);
        const Reference reference;
        for (std::size_t i = 0; i < POINT_COUNT; ++i) {
            const P2 pixel{x(random), y(random)};
            P2 there;
            P2 expected;
            if (!map.mapChannel2DToScreen2D(pixel, there) || !reference.evaluate(pixel, expected) ||
                norm(there - expected) > 1e-9) {
                std::fprintf(stderr, "the two sides do not agree at %g, %g\n", pixel[0], pixel[1]);
                std::exit(2);
            }
            pixels.push_back(pixel);
            screen.push_back(there);
        }
    }
};

template <class Map>
ratio::Body over(std::shared_ptr<const std::vector<P2>> points, Map map) {
    return [points = std::move(points), map = std::move(map)](benchmark::State& state) {
        for (auto _ : state) {
            for (const P2& point : *points) {
                P2 out;
                benchmark::DoNotOptimize(map(point, out));
                benchmark::DoNotOptimize(out);
            }
        }
    };
}

}  // namespace

int main(int argc, char** argv) {
    const auto map = std::make_shared<const CustomPlanarScreenToChannelMap>(loadMap());
    const auto points = std::make_shared<const Points>(*map);
    const std::shared_ptr<const std::vector<P2>> pixels(points, &points->pixels);
    const std::shared_ptr<const std::vector<P2>> screen(points, &points->screen);
    const auto reference = std::make_shared<const Reference>();
    const ratio::Body bilinear =
        over(pixels, [reference](const P2& pixel, P2& out) { return reference->evaluate(pixel, out); });
    ratio::pair("custom planar point, picture to screen",
                over(pixels, [map](const P2& pixel, P2& out) { return map->mapChannel2DToScreen2D(pixel, out); }),
                bilinear, FORWARD_LIMIT);
    ratio::pair("custom planar point, screen to picture",
                over(screen, [map](const P2& place, P2& out) { return map->mapScreen2DToChannel2D(place, out); }),
                bilinear, INVERSE_LIMIT);
    return ratio::run(argc, argv, ratio::MANY_AND_SHORT);
}
