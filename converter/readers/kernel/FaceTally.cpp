#include "readers/kernel/FaceTally.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tnconvert {

namespace {

/// The share of the area with three digits; empty when it is not known.
std::string shareText(const FaceTally &tally)
{
    if (!tally.lostArea)
        return {};
    const double percent = 100 * *tally.lostArea / std::max(*tally.lostArea + tally.area, 1e-30);
    if (percent < 0.001)
        return ", less than 0.001 % of the area";
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), ", %.3g %% of the area", percent);
    return text.data();
}

} // namespace

FaceTally &FaceTally::operator+=(const FaceTally &other)
{
    faces += other.faces;
    lost += other.lost;
    area += other.area;
    lostArea =
        lostArea && other.lostArea ? std::optional(*lostArea + *other.lostArea) : std::nullopt;
    isFiltered = isFiltered || other.isFiltered;
    return *this;
}

std::string FaceTally::sentence(const std::string &file) const
{
    if (lost == 0)
        return {};
    return std::to_string(lost) + " of " + std::to_string(faces) + " faces of " + file
        + " could not be tessellated" + shareText(*this) + ".";
}

} // namespace tnconvert
