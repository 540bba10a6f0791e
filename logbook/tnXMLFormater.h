#pragma once

#include "logbook/tnLogFormater.h"

/// The logbook for programs: one chapter per file, with an element per entry. Entries without a
/// message are left out. Nothing is escaped, so markup characters in paths and messages come
/// through as they stand.
class tnXMLFormater : public tnLogFormater {
public:
    QString format(const tnLogTable &table) const override;
};
