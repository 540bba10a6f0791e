#pragma once

#include "platform/tndProjectMergeSettings.h"
#include "platform/tndSceneImportSettings.h"
#include "platform/tndXlatSettings.h"

#include <functional>
#include <vector>

namespace Ui {
class tnImportDialog;
}

/// How one field, or a pair of fields, of an option record stands in the form. A direction that a
/// field does not have is empty.
template <typename Record>
struct OptionRow {
    std::function<void(const Record &from, Ui::tnImportDialog &form)> show;
    std::function<void(const Ui::tnImportDialog &form, Record &to)> collect;
};

template <typename Record>
using OptionTable = std::vector<OptionRow<Record>>;

// One table per record, in the order in which fields are shown and collected. Fields whose meaning
// hangs on the file type are not among them; they are the dialog's.
const OptionTable<tndXlatSettings> &xlatOptions();
const OptionTable<tndSceneImportSettings> &sceneImportOptions();
const OptionTable<tndProjectMergeSettings> &projectMergeOptions();

/// Fills the widgets from the record. Each widget that changes tells so.
template <typename Record>
void showOptions(const OptionTable<Record> &table, const Record &record, Ui::tnImportDialog &form)
{
    for (const OptionRow<Record> &row : table) {
        if (row.show)
            row.show(record, form);
    }
}

/// Overwrites the fields that have a widget; the others stay.
template <typename Record>
void collectOptions(const OptionTable<Record> &table, const Ui::tnImportDialog &form,
                    Record &record)
{
    for (const OptionRow<Record> &row : table) {
        if (row.collect)
            row.collect(form, record);
    }
}
