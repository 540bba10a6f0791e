#pragma once

#include "logbook/tnLogbook.h"

/// Turns a logbook table into the whole text of a file. Formatters have no state.
class tnLogFormater {
public:
    tnLogFormater() = default;
    virtual ~tnLogFormater();
    Q_DISABLE_COPY_MOVE(tnLogFormater)

    /// The text; a null string for an empty table.
    virtual QString format(const tnLogbook::Table &table) const = 0;
};
