// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/console.h"

#include <QString>
#include <QStringView>

#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace ravlin::cli {

/// A value of a record; monostate means unknown.
using Value = std::variant<std::monostate, QString, qint64, bool>;
using Record = std::vector<Value>;
/// Names and values that only some records have.
using Extra = std::vector<std::pair<QStringView, Value>>;

enum class Format
{
    Json,         ///< one array, an object per line
    TabSeparated, ///< for scripts: a line of column names, then a line per record
    Table,        ///< for people: aligned columns; written at the end, when all widths are known
    Blocks,       ///< for people: a line per value, an empty line between records
};

/// Returns Json if requested, else forPeople on a terminal and TabSeparated elsewhere.
Format chooseFormat(bool json, const Output &out, Format forPeople);

/// Writes records with the same columns.
class RecordWriter
{
public:
    RecordWriter(Output &out, Format format, std::vector<QStringView> columns);

    /// The record has a value for each column. The extra ones show only in Json and Blocks.
    void write(const Record &record, const Extra &extra = {});
    /// Ends the output. Must be called even if there was no record.
    void finish();

private:
    void writeJson(const Record &record, const Extra &extra);
    void writeTabSeparated(const Record &record);
    void writeBlock(const Record &record, const Extra &extra);
    void writeTable();

    Output &m_out;
    const Format m_format;
    const std::vector<QStringView> m_columns;
    bool m_isFirst = true;
    std::vector<std::vector<QString>> m_rows; ///< only for Table
};

} // namespace ravlin::cli
