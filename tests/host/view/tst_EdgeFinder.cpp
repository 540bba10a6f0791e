#include "BoxScene.h"
#include "host/view/EdgeFinder.h"

#include <QtTest/QtTest>

#include <cmath>

using namespace tnhost;

namespace {

/// The sides of a drum of so many corners, in two halves that have vertices of their own, with the
/// normals of a round surface or none.
ScenePrimitive drum(int corners, bool hasNormals)
{
    ScenePrimitive result;
    for (int half = 0; half < 2; ++half) {
        const auto first = static_cast<std::uint32_t>(result.positions.size());
        for (int i = 0; i <= corners / 2; ++i) {
            const int corner = (i + half * corners / 2) % corners;
            const float angle = 2 * float(M_PI) * float(corner) / float(corners);
            const QVector3D around(std::cos(angle), std::sin(angle), 0);
            for (const float z : {0.0F, 1.0F}) {
                result.positions.push_back(around + QVector3D(0, 0, z));
                if (hasNormals)
                    result.normals.push_back(around);
            }
            if (i > 0) {
                const std::uint32_t at = first + 2 * static_cast<std::uint32_t>(i);
                for (const std::uint32_t index : {at - 2, at, at + 1, at - 2, at + 1, at - 1})
                    result.indices.push_back(index);
            }
        }
    }
    return result;
}

std::size_t count(const ScenePrimitive &primitive)
{
    return EdgeFinder::find(primitive).size() / 2;
}

} // namespace

class tst_EdgeFinder : public QObject {
    Q_OBJECT

private slots:
    void findsWhereBodiesBend()
    {
        const auto half = cubes({})->meshes[0]->primitives[0];
        // Of half a cube, without its top: four below, four upright ones, four where it ends.
        QCOMPARE(count(half), std::size_t(12));
        ScenePrimitive turned = half;
        std::swap(turned.indices[0], turned.indices[1]); // one triangle seen from behind
        turned.normals.assign(turned.positions.size(), {0, 0, 1});
        QCOMPARE(count(turned), std::size_t(4)); // all one surface but where it ends
    }

    void findsNoneOnRoundSurfaces()
    {
        QCOMPARE(count(drum(12, true)), std::size_t(24)); // both rims
        QCOMPARE(count(drum(12, false)), std::size_t(36));
        QCOMPARE(count(drum(200, false)), std::size_t(400));
    }

    void takesAnything()
    {
        ScenePrimitive lines;
        lines.kind = ScenePrimitive::Kind::Lines;
        lines.positions = {{}, {1, 0, 0}};
        lines.indices = {0, 1};
        QCOMPARE(count(lines), std::size_t(0));
        ScenePrimitive fan; // three triangles at one side, and one that is none
        fan.positions = {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {2, 0, 0}, {-1, 0, 0}};
        fan.normals.assign(5, {0, 1, 0});
        fan.indices = {0, 1, 2, 0, 1, 3, 0, 1, 4, 0, 0, 0};
        QCOMPARE(count(fan), std::size_t(7));
        QCOMPARE(count({}), std::size_t(0));
    }
};

QTEST_APPLESS_MAIN(tst_EdgeFinder)
#include "tst_EdgeFinder.moc"
