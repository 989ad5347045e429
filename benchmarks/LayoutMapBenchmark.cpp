#include "Configuration/XMLConfigFile.h"
#include "EmbreeReference.h"
#include "KelvoControl/Configuration.h"
#include "KelvoScreen/MeshScreen.h"
#include "MeshRays.h"
#include "Ratio.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <malloc.h>
#include <pcl/kdtree/kdtree_flann.h>
#include <pcl/point_types.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

/// Layout maps of displays that are seen from an eye, on a mesh of a million triangles: from the picture to the layout
/// point by point and many at once, and the search of the collimated map with and without its cache.

namespace {

using Vector = Point<double, 3>;
using Picture = Point<double, 2>;

/// The pictures of a channel of a dome and of a collimated one, pixels.
constexpr int WIDTH = 1920;
constexpr int HEIGHT = 1200;
constexpr int SIDE = 1024;
/// Layout points that are searched, all of them those of pixels that the search finds.
constexpr std::size_t WANTED = 4096;
/// The layout points that a search of a picture of 1024 x 1024 pixels requests on average.
constexpr std::size_t ASKED = 262;

/// A display of one channel, straight ahead from an eye off the centre, with everything that its map needs.
class Display {
public:
    Display(const std::string& targetData, int width, int height)
        : m_config(XMLConfigFile::parse(
              "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>"
              "<Screen shape='Sphere'><Centre x='0' y='0' z='0'/><EyePoint x='0.5' y='1' z='0.25'/><Radius "
              "value='5'/></Screen>" +
                  targetData + "<Projectors><Projector id='P1'><Resolution width='" + std::to_string(width) +
                  "' height='" + std::to_string(height) +
                  "'/><Frustum left='-45' right='45' bottom='-45' top='45'/></Projector></Projectors></Display>",
              "benchmark.xml")),
          m_table(std::make_shared<KelvoControl::Configuration>(m_config.get())) {}

    [[nodiscard]] XMLConfigManager* config() const { return m_config.get(); }
    [[nodiscard]] const std::shared_ptr<KelvoControl::Configuration>& table() const { return m_table; }

private:
    std::unique_ptr<XMLConfigFile> m_config;
    std::shared_ptr<KelvoControl::Configuration> m_table;
};

Display dome() {
    return {"<TargetData type='Spherical'/>", WIDTH, HEIGHT};
}

Display mirrorDisplay() {
    return {
        "<TargetData type='SphericalCollimated'><Mirror radius='3'>"
        "<Orientation z='0' x='10' y='0'/><Position x='0' y='0' z='0.5'/></Mirror></TargetData>",
        SIDE, SIDE};
}

/// The picture points of the pixels, row by row.
std::vector<Picture> picturePoints(int width, int height) {
    std::vector<Picture> points;
    points.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            points.emplace_back((x + 0.5) / width, (y + 0.5) / height);
        }
    }
    return points;
}

/// Times `step` on everything that was prepared; `count` results each time.
template <class Step>
ratio::Body timing(std::size_t count, const Step& step) {
    return [count, step](benchmark::State& state) {
        ratio::returnMemoryToSystem();
        for (auto _ : state) {
            step();
        }
        state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(count));
    };
}

/// A whole channel of a dome, and room for its layout points.
struct Channel {
    Display display = dome();
    SphericalLayoutToChannelMap map{display.config(), display.table()};
    std::vector<Picture> points = picturePoints(WIDTH, HEIGHT);
    std::vector<LayoutPoint> layout = std::vector<LayoutPoint>(points.size());
};

void addSphericalPairs(const std::shared_ptr<MeshScreen>& screen) {
    const auto channel = std::make_shared<Channel>();
    const auto embree = std::make_shared<EmbreeReference>(screen->mesh());
    const auto pointByPoint = timing(channel->points.size(), [channel] {
        for (std::size_t i = 0; i < channel->points.size(); ++i) {
            LayoutPoint& answer = channel->layout[i];
            answer.isMapped = channel->map.mapChannelToLayout(channel->points[i], answer.point, 0);
        }
        benchmark::DoNotOptimize(channel->layout.data());
    });
    const auto bare = timing(channel->points.size(), [channel, embree] {
        const Vector eye{0.5, 1.0, 0.25};
        for (std::size_t i = 0; i < channel->points.size(); ++i) {
            const Picture& point = channel->points[i];
            const SurfaceHit hit = embree->ask({eye, eye + Vector{2 * point[0] - 1, 1.0, 2 * point[1] - 1}});
            channel->layout[i] = {hit.point, hit.hit};
        }
        benchmark::DoNotOptimize(channel->layout.data());
    });
    const auto atOnce = timing(channel->points.size(), [channel] {
        channel->map.mapChannelPointsToLayout(channel->points, channel->layout, 0);
        benchmark::DoNotOptimize(channel->layout.data());
    });
    ratio::pair("spherical_point_by_point_mesh_1M", pointByPoint, bare, 1.2);
    ratio::pair("spherical_grid_at_once_mesh_1M", atOnce, pointByPoint, 0.6);
}

/// Keeps what a search requests.
class AskedPoints : public CollimatedLayoutToChannelMap {
public:
    using CollimatedLayoutToChannelMap::CollimatedLayoutToChannelMap;

    std::vector<Picture> asked;

    bool mapChannelToLayout(const Picture& channel, Vector& layout, std::size_t channelIndex) override {
        asked.push_back(channel);
        return CollimatedLayoutToChannelMap::mapChannelToLayout(channel, layout, channelIndex);
    }
};

/// A channel that is seen in a mirror; its map with and without a cache, and what is searched.
class MirrorChannel {
public:
    MirrorChannel() {
        std::mt19937_64 generator(1);
        std::uniform_int_distribution<int> pixel(1, SIDE - 1);
        AskedPoints map(display.config(), display.table(), false);
        while (wanted.size() < WANTED) {
            const double x = pixel(generator);
            const double y = pixel(generator);
            Vector layout;
            Picture picture;
            without.mapChannelToLayout({x / SIDE, y / SIDE}, layout, 0);
            map.asked.clear();
            // The mirror folds the bumps of the mesh: some searches go astray, and take longer than any other.
            if (map.mapLayoutToChannel(layout, picture, 0)) {
                wanted.push_back(layout);
                keepAsked(map.asked);
            }
        }
        // Every place of the cache is filled before it is timed.
        search(with);
    }

    /// As many as a search requests on average, the same for all.
    void keepAsked(const std::vector<Picture>& points) {
        for (std::size_t i = 0; i < ASKED; ++i) {
            asked.push_back(points[i % points.size()]);
        }
    }

    void search(CollimatedLayoutToChannelMap& map) {
        for (const Vector& layout : wanted) {
            Picture picture;
            map.mapLayoutToChannel(layout, picture, 0);
            benchmark::DoNotOptimize(picture);
        }
    }

    Display display = mirrorDisplay();
    CollimatedLayoutToChannelMap without{display.config(), display.table(), false};
    CollimatedLayoutToChannelMap with{display.config(), display.table(), true};
    std::vector<Vector> wanted;
    std::vector<Picture> asked;
};

/// The plain way to the nearest pixel: a tree over the layout points of all.
class PixelTree {
public:
    explicit PixelTree(MirrorChannel& channel) {
        const auto cloud = std::make_shared<pcl::PointCloud<pcl::PointXYZ>>();
        for (int y = 0; y < SIDE; ++y) {
            for (int x = 0; x < SIDE; ++x) {
                Vector layout;
                const Picture picture{static_cast<double>(x) / SIDE, static_cast<double>(y) / SIDE};
                if (channel.without.mapChannelToLayout(picture, layout, 0)) {
                    cloud->push_back(pointOf(layout));
                }
            }
        }
        m_tree.setInputCloud(cloud);
    }

    [[nodiscard]] int nearest(const Vector& wanted) {
        m_tree.nearestKSearch(pointOf(wanted), 1, m_indices, m_distances);
        return m_indices[0];
    }

private:
    static pcl::PointXYZ pointOf(const Vector& layout) {
        return {static_cast<float>(layout[0]), static_cast<float>(layout[1]), static_cast<float>(layout[2])};
    }

    pcl::KdTreeFLANN<pcl::PointXYZ> m_tree{false};
    pcl::Indices m_indices = pcl::Indices(1);
    std::vector<float> m_distances = std::vector<float>(1);
};

void addCollimatedPairs(const std::shared_ptr<MirrorChannel>& channel) {
    const auto tree = std::make_shared<PixelTree>(*channel);
    const auto withoutCache = timing(WANTED, [channel] { channel->search(channel->without); });
    const auto withCache = timing(WANTED, [channel] { channel->search(channel->with); });
    const auto forward = timing(WANTED, [channel] {
        for (const Picture& point : channel->asked) {
            Vector layout;
            channel->without.mapChannelToLayout(point, layout, 0);
            benchmark::DoNotOptimize(layout);
        }
    });
    const auto queries = timing(WANTED, [channel, tree] {
        for (const Vector& layout : channel->wanted) {
            benchmark::DoNotOptimize(tree->nearest(layout));
        }
    });
    const auto points = std::make_shared<const std::vector<Picture>>(picturePoints(SIDE, SIDE));
    const auto layout = std::make_shared<std::vector<LayoutPoint>>(points->size());
    const auto pointByPoint = timing(points->size(), [channel, points, layout] {
        for (std::size_t i = 0; i < points->size(); ++i) {
            LayoutPoint& answer = (*layout)[i];
            answer.isMapped = channel->without.mapChannelToLayout((*points)[i], answer.point, 0);
        }
        benchmark::DoNotOptimize(layout->data());
    });
    const auto atOnce = timing(points->size(), [channel, points, layout] {
        channel->without.mapChannelPointsToLayout(*points, *layout, 0);
        benchmark::DoNotOptimize(layout->data());
    });
    // The mirror is called ray by ray all the same.
    ratio::pair("collimated_grid_at_once_mesh_1M", atOnce, pointByPoint, 0.5);
    ratio::pair("collimated_search_1024_vs_262_maps", withoutCache, forward, 1.35);
    ratio::pair("collimated_search_warm_vs_kd_tree", withCache, queries, 2.5);
    ratio::pair("collimated_search_warm_vs_no_cache", withCache, withoutCache, 0.04);
}

std::size_t memoryInUse() {
    const auto info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// What a cache takes, relative to the layout points that it holds.
double memoryOfACache() {
    const Display display = mirrorDisplay();
    const CollimatedLayoutToChannelMap first(display.config(), display.table(), false);
    const std::size_t before = memoryInUse();
    const CollimatedLayoutToChannelMap map(display.config(), display.table(), true);
    return static_cast<double>(memoryInUse() - before) / (24.0 * (SIDE + 1.0) * (SIDE + 1.0));
}

}  // namespace

int main(int argc, char** argv) {
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    const auto screen = std::make_shared<MeshScreen>(meshRays::bumpySphere(meshRays::CELLS_1M));
    ScreenManager::getInstance()->setScreenGeometry(screen);
    // The search structure is built by the first ray.
    (void)screen->intersect({}, {0.0, 1.0, 0.0});
    const double memory = memoryOfACache();
    const auto mirror = std::make_shared<MirrorChannel>();
    addSphericalPairs(screen);
    addCollimatedPairs(mirror);
    const int result = ratio::run(argc, argv);
    constexpr double LIMIT = 1.05;
    std::printf("RATIO %-44s held over points %5.2f  limit %5.2f  %s\n", "collimated_cache_memory", memory, LIMIT,
                memory <= LIMIT ? "ok" : "ABOVE");
    return result;
}
