#pragma once

#include <array>
#include <cmath>

namespace tnconvert {

/// Three coordinates; lengths are millimetres unless said otherwise.
struct Vec3 {
    double x = 0;
    double y = 0;
    double z = 0;

    Vec3 operator+(const Vec3 &o) const { return {x + o.x, y + o.y, z + o.z}; }
    Vec3 operator-(const Vec3 &o) const { return {x - o.x, y - o.y, z - o.z}; }
    Vec3 operator*(double f) const { return {x * f, y * f, z * f}; }
    double dot(const Vec3 &o) const { return x * o.x + y * o.y + z * o.z; }
    Vec3 cross(const Vec3 &o) const
    {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    double length() const { return std::sqrt(dot(*this)); }
    /// The vector of length 1, or the null vector where there is no direction.
    Vec3 normalized() const
    {
        const double l = length();
        return l > 1e-300 && std::isfinite(l) ? *this * (1 / l) : Vec3{};
    }
    bool isFinite() const;
};

/// An affine transformation, kept as a column-major 4x4 matrix.
class Transform {
public:
    Transform();

    static Transform translation(const Vec3 &offset);
    static Transform scaling(const Vec3 &factors);
    /// Rotation about @p axis by @p radians; the identity when the axis is null.
    static Transform rotation(const Vec3 &axis, double radians);

    double &at(int row, int column) { return m_values[std::size_t(column * 4 + row)]; }
    double at(int row, int column) const { return m_values[std::size_t(column * 4 + row)]; }
    const std::array<double, 16> &values() const { return m_values; }

    Transform operator*(const Transform &right) const;
    Vec3 point(const Vec3 &p) const;
    Vec3 direction(const Vec3 &d) const;
    /// Transforms a normal: by the cofactors, so that it stays perpendicular to its surface. The
    /// result has length 1 or 0.
    Vec3 normal(const Vec3 &n) const;
    /// Negative for mirroring transformations.
    double determinant() const;
    bool isIdentity() const;
    /// Whether all values are finite as floats too, which is how outputs are read.
    bool isFinite() const;
    /// Whether the axes stay perpendicular, so that translation, rotation and scale describe it.
    bool isDecomposable() const;

private:
    std::array<double, 16> m_values;
};

} // namespace tnconvert
