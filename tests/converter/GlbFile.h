#pragma once

#include "scene/Transform.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <nlohmann/json.hpp>

#include <array>
#include <functional>
#include <vector>

/// A glTF binary, read without any of the program's own code, for looking at results.
class GlbFile {
public:
    struct Instance {
        QString path; ///< names of the nodes from below the top node down, with slashes
        int mesh = -1;
        tnconvert::Transform toFile; ///< to the CAD file's own axes; millimetres
    };

    struct Box {
        std::array<double, 3> least{1e30, 1e30, 1e30};
        std::array<double, 3> most{-1e30, -1e30, -1e30};

        void include(const tnconvert::Vec3 &point);
        /// Whether all six coordinates differ by no more than @p tolerance.
        bool isNear(const Box &other, double tolerance) const;
        QByteArray text() const;
    };

    explicit GlbFile(const QString &path);

    const nlohmann::json &document() const { return m_json; }

    /// Breaches of the format; empty for a file that every loader can rely on.
    QStringList problems() const;

    /// All nodes below the top node, parents first.
    const std::vector<Instance> &instances() const { return m_instances; }
    QStringList paths() const;

    /// Triangles and segments that are drawn, each instance counted.
    int triangles() const { return elements(4); }
    int segments() const { return elements(1); }
    /// The area of all triangles in mm².
    double area() const;
    /// The volume that closed surfaces enclose in mm³; negative when they are turned inside out.
    double volume() const;
    Box box() const;
    int meshCount() const { return m_json.contains("meshes") ? int(m_json["meshes"].size()) : 0; }
    /// The different base colours of the nodes of this path, in sRGB and rounded to 2 digits.
    QStringList colors(const QString &path) const;
    /// The smallest scalar product of a triangle's and its corners' normals.
    double leastNormalAgreement() const;

private:
    struct Triangle {
        std::array<tnconvert::Vec3, 3> local; ///< in the mesh's own space, as the normals are
        std::array<tnconvert::Vec3, 3> corners; ///< in the CAD file's own space; millimetres
        std::vector<tnconvert::Vec3> normals; ///< three or none
    };

    void collect(int node, const tnconvert::Transform &above, const QString &path);
    int elements(int mode) const;
    void visitPrimitives(
        const std::function<void(const Instance &, const nlohmann::json &)> &visit) const;
    void visitTriangles(const std::function<void(const Triangle &)> &visit) const;
    std::vector<double> accessorValues(int accessor) const; ///< none for -1
    std::vector<tnconvert::Vec3> vectors(int accessor) const;
    void checkAccessor(int index, QStringList &problems) const;
    void checkPrimitive(const nlohmann::json &primitive, QStringList &problems) const;

    nlohmann::json m_json;
    QByteArray m_binary;
    QStringList m_containerProblems;
    std::vector<Instance> m_instances;
};
