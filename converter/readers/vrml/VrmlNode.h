#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tnconvert {

/// What is missing of a file.
struct VrmlLosses {
    std::map<std::string, std::size_t>
        counts; ///< by what it is, as in "extrusions without a spine"
    std::vector<std::string> damages; ///< in sentences

    std::size_t &operator[](const std::string &what) { return counts[what]; }
    bool operator!=(const VrmlLosses &o) const
    {
        return counts != o.counts || damages != o.damages;
    }
};

struct VrmlNode;
using VrmlNodePtr = std::shared_ptr<const VrmlNode>;

/// The numbers of a field. Lists of indices are the longest ones, and take half the memory.
class VrmlNumbers {
public:
    VrmlNumbers() = default;
    VrmlNumbers(std::initializer_list<double> values)
        : m_values(values)
    {
    }

    bool empty() const { return size() == 0; }
    std::size_t size() const { return m_integers.size() + m_values.size(); }
    double front() const { return (*this)[0]; }
    double operator[](std::size_t index) const
    {
        return m_integers.empty() ? m_values[index] : m_integers[index];
    }
    void push_back(double value);

private:
    std::vector<std::int32_t> m_integers; ///< all of them, while they are
    std::vector<double> m_values; ///< all of them otherwise
};

/// The value of a field. Which of the members is filled depends on the text, not on the field's
/// declared type, so that unknown nodes can be read as well. TRUE and FALSE are 1 and 0.
struct VrmlField {
    VrmlNumbers numbers;
    std::vector<std::string> strings;
    std::vector<VrmlNodePtr> nodes;
    std::string prototypeField; ///< the field that IS refers to
};

/// One node of a file. A node that is used several times is the same object.
struct VrmlNode {
    std::string type;
    std::string name; ///< given by DEF
    std::size_t line = 0;
    std::map<std::string, VrmlField> fields;
    bool refersToPrototype = false; ///< by IS, here or in a node below
    int height = 1; ///< levels of nodes from this one down

    /// The field's value; null when the file does not state it.
    const VrmlField *field(const char *fieldName) const;
    /// The first node of the field; null when there is none.
    VrmlNodePtr child(const char *fieldName) const;
    const std::vector<VrmlNodePtr> &children(const char *fieldName) const;
    const VrmlNumbers &numbers(const char *fieldName) const;
    double number(const char *fieldName, double fallback) const;
    bool flag(const char *fieldName, bool fallback) const;
    std::string text(const char *fieldName) const;
};

} // namespace tnconvert
