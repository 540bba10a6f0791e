#pragma once

#include <array>
#include <cstddef>
#include <string>

namespace tnconvert {

/// What of a Step file did not arrive, counted by kind, with the first entity of each.
class StepLosses {
public:
    enum class Kind {
        Twin, ///< an entity with the number of another one
        Needed, ///< an entity that shapes or places need
        Shape, ///< a solid or surface model that gave nothing
        Face, ///< of one that gave something
        Hole, ///< in the surface of a solid
        Fit, ///< the edges of a shape miss each other by a hundredth of its size
        Place, ///< of a part or shape
        Validation, ///< a product that is not as large as the file says
        Entity, ///< something else that the kernel gave up on
        KindCount
    };

    /// @p entity is one as the file has it, as in "#13 VERTEX_POINT".
    void add(Kind kind, const std::string &entity, std::size_t count = 1);
    /// Of how many the lost ones are.
    void addTotal(Kind kind, std::size_t count);

    void add(const StepLosses &others);

    bool isEmpty() const;

    /// What is lost from @p file, empty when nothing is.
    std::string sentence(const std::string &file) const;

private:
    struct Loss {
        std::size_t count = 0;
        std::size_t total = 0; ///< 0: not known
        std::string first;
    };
    std::array<Loss, std::size_t(Kind::KindCount)> m_losses;
};

} // namespace tnconvert
