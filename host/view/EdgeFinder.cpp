#include "host/view/EdgeFinder.h"

#include "host/scene/SceneFragment.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QMetaObject>

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace tnhost {

namespace {

/// Between normals that belong to one surface.
constexpr float leastCosine = 0.97F;

/// One side of a triangle, from the corner to the next one. The ends are numbers of places, the
/// lower one first, so that sides which meet are equal.
struct Side {
    std::uint32_t low;
    std::uint32_t high;
    std::uint32_t corner; ///< into the indices

    bool meets(const Side &other) const { return low == other.low && high == other.high; }
};

std::uint32_t nextCorner(std::uint32_t corner)
{
    return corner % 3 == 2 ? corner - 2 : corner + 1;
}

/// For each position the first one of the same place: surfaces that meet have vertices of their
/// own.
std::vector<std::uint32_t> placesOf(const std::vector<QVector3D> &positions)
{
    const auto key = [&positions](std::uint32_t i) {
        return std::make_tuple(positions[i].x(), positions[i].y(), positions[i].z());
    };
    std::vector<std::uint32_t> order(positions.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&key](std::uint32_t a, std::uint32_t b) { return key(a) < key(b); });
    std::vector<std::uint32_t> places(positions.size());
    for (std::size_t i = 0; i < order.size(); ++i)
        places[order[i]] = i > 0 && positions[order[i]] == positions[order[i - 1]]
            ? places[order[i - 1]]
            : order[i];
    return places;
}

std::vector<Side> sidesOf(const ScenePrimitive &primitive)
{
    const std::vector<std::uint32_t> places = placesOf(primitive.positions);
    const auto &indices = primitive.indices;
    std::vector<Side> sides;
    sides.reserve(indices.size());
    for (std::uint32_t corner = 0; corner < indices.size(); ++corner) {
        const auto [low, high] =
            std::minmax({places[indices[corner]], places[indices[nextCorner(corner)]]});
        if (low != high)
            sides.push_back({low, high, corner});
    }
    std::sort(sides.begin(), sides.end(), [](const Side &a, const Side &b) {
        return std::tie(a.low, a.high) < std::tie(b.low, b.high);
    });
    return sides;
}

QVector3D normalAt(const ScenePrimitive &primitive, std::uint32_t corner)
{
    if (!primitive.normals.empty())
        return primitive.normals[primitive.indices[corner]].normalized();
    const auto at = [&primitive](std::uint32_t i) {
        return primitive.positions[primitive.indices[i]];
    };
    const std::uint32_t next = nextCorner(corner);
    return QVector3D::normal(at(corner), at(next), at(nextCorner(next)));
}

/// Whether the surfaces on both sides go on without a bend.
bool isSmooth(const ScenePrimitive &primitive, const Side &a, const Side &b)
{
    const auto agree = [&primitive](std::uint32_t one, std::uint32_t other) {
        return QVector3D::dotProduct(normalAt(primitive, one), normalAt(primitive, other))
            > leastCosine;
    };
    // Neighbours with the same winding run along their side in opposite directions.
    const QVector3D &start = primitive.positions[primitive.indices[a.corner]];
    const bool isSameWay = start == primitive.positions[primitive.indices[b.corner]];
    const std::uint32_t bStart = isSameWay ? b.corner : nextCorner(b.corner);
    const std::uint32_t bEnd = isSameWay ? nextCorner(b.corner) : b.corner;
    return agree(a.corner, bStart) && agree(nextCorner(a.corner), bEnd);
}

} // namespace

EdgeFinder::Edges EdgeFinder::find(const ScenePrimitive &primitive)
{
    if (primitive.kind != ScenePrimitive::Kind::Triangles)
        return {};
    const std::vector<Side> sides = sidesOf(primitive);
    Edges edges;
    for (auto first = sides.begin(); first != sides.end();) {
        const auto end =
            std::find_if(first, sides.end(), [&](const Side &side) { return !side.meets(*first); });
        if (end - first != 2 || !isSmooth(primitive, first[0], first[1])) {
            edges.push_back(primitive.positions[first->low]);
            edges.push_back(primitive.positions[first->high]);
        }
        first = end;
    }
    return edges;
}

EdgeFinder::EdgeFinder()
{
    m_pool.setMaxThreadCount(1); // the converters want the other cores
}

EdgeFinder::~EdgeFinder()
{
    m_pool.clear();
    m_pool.waitForDone();
}

void EdgeFinder::request(const std::shared_ptr<const SceneMesh> &mesh)
{
    m_pool.start([this, mesh] {
        std::vector<Edges> edges;
        edges.reserve(mesh->primitives.size());
        for (const ScenePrimitive &primitive : mesh->primitives)
            edges.push_back(find(primitive));
        QMetaObject::invokeMethod(
            this, [this, mesh, edges = std::move(edges)] { emit found(mesh, edges); },
            Qt::QueuedConnection);
    });
}

void EdgeFinder::finish()
{
    m_pool.waitForDone();
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

} // namespace tnhost
