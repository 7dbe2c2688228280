// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/console.h"

#include <QString>
#include <QStringView>

#include <span>
#include <variant>
#include <vector>

namespace ravlin::cli {

/// One value of a record; monostate: not known.
using Value = std::variant<std::monostate, QString, qint64, bool>;
using Record = std::vector<Value>;

/// How records are written.
enum class Format
{
    Json,         ///< one array with an object a line
    TabSeparated, ///< for scripts: a line with the columns' names, then one a record
    Table,        ///< for people: columns aligned; written at the end, since only then the widths are known
    Blocks,       ///< for people: a line a value, an empty line between records
};

/// JSON if that is asked for; else forPeople on a terminal, and fields with tabs between them elsewhere.
Format chooseFormat(bool json, const Output &out, Format forPeople);

/// Writes records that have the same columns.
class RecordWriter
{
public:
    RecordWriter(Output &out, Format format, std::vector<QStringView> columns);

    /// As many values as there are columns.
    void write(const Record &record);
    /// Ends the output; to be called even if there was no record.
    void finish();

private:
    void writeJson(const Record &record);
    void writeTabSeparated(const Record &record);
    void writeBlock(const Record &record);
    void writeTable();

    Output &m_out;
    const Format m_format;
    const std::vector<QStringView> m_columns;
    bool m_isFirst = true;
    std::vector<std::vector<QString>> m_rows; ///< of the table
};

} // namespace ravlin::cli
