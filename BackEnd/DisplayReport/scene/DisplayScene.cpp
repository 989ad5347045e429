#include "DisplayReport/scene/DisplayScene.h"

namespace Veltrani::DisplayReport {

namespace {

using P3 = Point<double, 3>;

/// Sizes of the core that something may stand away from its middle and still be framed: a projector far behind its
/// screen makes the picture smaller, one that was put there by a slip of the keyboard does not.
constexpr double NEAR = 4;

template <class Visit>
void visitTargets(const DisplayScene& scene, Visit&& visit) {
    for (const SceneChannel& channel : scene.channels) {
        for (const GridTarget& target : channel.targets.grid) {
            visit(target.point);
        }
        for (const P3& point : channel.targets.boundary) {
            visit(point);
        }
    }
}

template <class Visit>
void visitSurroundings(const DisplayScene& scene, Visit&& visit) {
    visitTargets(scene, visit);
    for (const ScenePlace& eye : scene.eyes) {
        visit(eye.point);
    }
    for (const SceneChannel& channel : scene.channels) {
        if (channel.frustum) {
            visit(channel.frustum->apex);
            for (const auto& edge : channel.frustum->edges) {
                for (const P3& point : edge) {
                    visit(point);
                }
            }
        }
    }
    if (scene.cloud) {
        for (const P3& point : scene.cloud->points) {
            visit(point);
        }
    }
    for (const SceneMark& mark : scene.marks) {
        for (const P3& point : mark.line) {
            visit(point);
        }
    }
}

}  // namespace

Extent DisplayScene::core() const {
    Extent box;
    for (const SceneSurface& surface : surfaces) {
        for (const P3& vertex : surface.vertices) {
            box.add(vertex);
        }
    }
    if (box.empty()) {
        visitTargets(*this, [&box](const P3& point) { box.add(point); });
    }
    return box;
}

std::vector<P3> DisplayScene::framedPoints() const {
    std::vector<P3> points;
    for (const SceneSurface& surface : surfaces) {
        points.insert(points.end(), surface.vertices.begin(), surface.vertices.end());
    }
    const Extent box = core();
    const P3 middle = box.minimum() + box.size() * 0.5;
    const double reach = NEAR * norm(box.size());
    visitSurroundings(*this, [&](const P3& point) {
        if (box.empty() || norm(point - middle) <= reach) {
            points.push_back(point);
        }
    });
    return points;
}

Extent DisplayScene::frame() const {
    Extent box;
    for (const P3& point : framedPoints()) {
        box.add(point);
    }
    if (box.empty()) {
        box.add({-0.5, -0.5, -0.5});
        box.add({0.5, 0.5, 0.5});
    }
    return box;
}

}  // namespace Veltrani::DisplayReport
