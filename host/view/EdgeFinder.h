#pragma once

#include <QtCore/QObject>
#include <QtCore/QThreadPool>
#include <QtGui/QVector3D>

#include <memory>
#include <vector>

namespace tnhost {

struct SceneMesh;
struct ScenePrimitive;

/// Finds the edges of bodies among the sides of their triangles, in the background.
class EdgeFinder : public QObject {
    Q_OBJECT

public:
    /// Two points for each edge: where triangles end, meet at an angle, or more than
    /// two of them meet. Between triangles of a round surface, which share normals, there is none.
    using Edges = std::vector<QVector3D>;
    /// O(n log n) in the triangles, with some 50 bytes for each meanwhile. None of lines.
    static Edges find(const ScenePrimitive &primitive);

    EdgeFinder();
    /// Waits for the mesh at work; the others are left out.
    ~EdgeFinder() override;

    /// found() will be emitted from the event loop.
    void request(const std::shared_ptr<const SceneMesh> &mesh);
    /// Finds at once what was requested.
    void finish();

signals:
    /// One list for each primitive of the mesh.
    void found(std::shared_ptr<const tnhost::SceneMesh> mesh,
               const std::vector<tnhost::EdgeFinder::Edges> &edges);

private:
    QThreadPool m_pool;
};

} // namespace tnhost
