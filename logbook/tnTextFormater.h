#pragma once

#include "logbook/tnLogFormater.h"

/// The logbook for people: one block of lines per file, closed by a blank line.
class tnTextFormater : public tnLogFormater {
public:
    QString format(const tnLogTable &table) const override;
};
