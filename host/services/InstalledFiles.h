#pragma once

#include <QtCore/QString>

namespace tnhost {

/// What is installed beside the program. Empty where it is not.
class InstalledFiles {
public:
    InstalledFiles() = delete;

    /// The user guide, in Markdown.
    static QString guide();
    /// An assembly to try things out with.
    static QString sample();
};

} // namespace tnhost
