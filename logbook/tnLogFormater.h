#pragma once

#include "logbook/tnLogbook.h"

class QTextStream;

/// Turns a logbook table into the text of a file. Formatters have no state.
class tnLogFormater {
public:
    tnLogFormater() = default;
    virtual ~tnLogFormater();
    Q_DISABLE_COPY_MOVE(tnLogFormater)

    /// The whole text; a null string for an empty table.
    virtual QString format(const tnLogbook::Table &table) const;

    /// Writes the same text file by file: whole, the logbook of a long batch takes much memory, and
    /// to fill that would be most of the time. Writes nothing for an empty table.
    virtual void write(const tnLogbook::Table &table, QTextStream &stream) const = 0;
};
