#pragma once

#include "host/scene/SceneFragment.h"

#include <QMap>
#include <QStringList>

#include <nlohmann/json.hpp>

/// A result as the host reads it: in millimetres and in the CAD file's own axes.
struct ConvertedFile {
    struct Instance {
        QString path; ///< names of the nodes from below the top node down, with slashes
        int mesh = -1;
        QMatrix4x4 toFile;
    };

    explicit ConvertedFile(const QString &path);

    /// Whether no coordinate of the box differs by more than @p tolerance. Prints it otherwise.
    bool fills(const tnhost::BoundingBox &expected, float tolerance) const;

    QStringList problems; ///< why some loader could not rely on the file
    nlohmann::json document;
    std::vector<Instance> instances; ///< of all nodes below the top node, parents first
    QStringList paths;
    int meshCount = 0;

    // Of all that is drawn, each instance counted.
    int triangles = 0;
    int segments = 0;
    double area = 0; ///< mm²
    double volume = 0; ///< mm³, of closed surfaces; negative when they are turned inside out
    tnhost::BoundingBox box;
    double leastNormalAgreement = 1; ///< scalar product of a triangle's and a corner's normal
    QMap<QString, QStringList> colors; ///< sRGB, by path, sorted, rounded to 2 digits

private:
    void check(const tnhost::SceneFragment &fragment);
    void collect(const tnhost::SceneFragment &fragment, int node, const Instance &above);
    void measure(const tnhost::ScenePrimitive &primitive, const QMatrix4x4 &toFile);
};
