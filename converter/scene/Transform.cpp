#include "scene/Transform.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tnconvert {

bool Vec3::isFinite() const
{
    return std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
}

Transform::Transform()
    : m_values{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}
{
}

Transform Transform::translation(const Vec3 &offset)
{
    Transform t;
    t.at(0, 3) = offset.x;
    t.at(1, 3) = offset.y;
    t.at(2, 3) = offset.z;
    return t;
}

Transform Transform::scaling(const Vec3 &factors)
{
    Transform t;
    t.at(0, 0) = factors.x;
    t.at(1, 1) = factors.y;
    t.at(2, 2) = factors.z;
    return t;
}

Transform Transform::rotation(const Vec3 &axis, double radians)
{
    const Vec3 a = axis.normalized();
    Transform t;
    if (a.dot(a) == 0 || !std::isfinite(radians))
        return t;
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const double k = 1 - c;
    t.at(0, 0) = a.x * a.x * k + c;
    t.at(0, 1) = a.x * a.y * k - a.z * s;
    t.at(0, 2) = a.x * a.z * k + a.y * s;
    t.at(1, 0) = a.y * a.x * k + a.z * s;
    t.at(1, 1) = a.y * a.y * k + c;
    t.at(1, 2) = a.y * a.z * k - a.x * s;
    t.at(2, 0) = a.z * a.x * k - a.y * s;
    t.at(2, 1) = a.z * a.y * k + a.x * s;
    t.at(2, 2) = a.z * a.z * k + c;
    return t;
}

Transform Transform::operator*(const Transform &right) const
{
    Transform result;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            double sum = 0;
            for (int i = 0; i < 4; ++i)
                sum += at(row, i) * right.at(i, column);
            result.at(row, column) = sum;
        }
    }
    return result;
}

Vec3 Transform::direction(const Vec3 &d) const
{
    return {at(0, 0) * d.x + at(0, 1) * d.y + at(0, 2) * d.z,
            at(1, 0) * d.x + at(1, 1) * d.y + at(1, 2) * d.z,
            at(2, 0) * d.x + at(2, 1) * d.y + at(2, 2) * d.z};
}

Vec3 Transform::point(const Vec3 &p) const
{
    return direction(p) + Vec3{at(0, 3), at(1, 3), at(2, 3)};
}

Vec3 Transform::normal(const Vec3 &n) const
{
    const Vec3 x{at(0, 0), at(1, 0), at(2, 0)};
    const Vec3 y{at(0, 1), at(1, 1), at(2, 1)};
    const Vec3 z{at(0, 2), at(1, 2), at(2, 2)};
    const double sign = determinant() < 0 ? -1 : 1;
    return ((y.cross(z) * n.x + z.cross(x) * n.y + x.cross(y) * n.z) * sign).normalized();
}

double Transform::determinant() const
{
    const Vec3 x{at(0, 0), at(1, 0), at(2, 0)};
    const Vec3 y{at(0, 1), at(1, 1), at(2, 1)};
    const Vec3 z{at(0, 2), at(1, 2), at(2, 2)};
    return x.dot(y.cross(z));
}

bool Transform::isIdentity() const
{
    return m_values == Transform().m_values;
}

bool Transform::isFinite() const
{
    return std::all_of(m_values.begin(), m_values.end(), [](double v) {
        return std::fabs(v) <= double(std::numeric_limits<float>::max());
    });
}

bool Transform::isDecomposable() const
{
    const Vec3 x = Vec3{at(0, 0), at(1, 0), at(2, 0)}.normalized();
    const Vec3 y = Vec3{at(0, 1), at(1, 1), at(2, 1)}.normalized();
    const Vec3 z = Vec3{at(0, 2), at(1, 2), at(2, 2)}.normalized();
    constexpr double tolerance = 1e-6;
    return std::fabs(x.dot(y)) < tolerance && std::fabs(y.dot(z)) < tolerance
        && std::fabs(z.dot(x)) < tolerance && determinant() != 0;
}

} // namespace tnconvert
