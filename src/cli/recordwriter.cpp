// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/recordwriter.h"

#include "cli/text.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// The value in tables and blocks.
QString textOf(const Value &value)
{
    if (const auto *text = std::get_if<QString>(&value))
        return *text;
    if (const auto *number = std::get_if<qint64>(&value))
        return QString::number(*number);
    if (const auto *flag = std::get_if<bool>(&value))
        return *flag ? u"yes"_s : u"no"_s;
    return {};
}

void appendJson(QByteArray &json, const Value &value)
{
    if (const auto *text = std::get_if<QString>(&value))
        appendJsonString(json, *text);
    else if (const auto *number = std::get_if<qint64>(&value))
        json += QByteArray::number(*number);
    else if (const auto *flag = std::get_if<bool>(&value))
        json += *flag ? "true" : "false";
    else
        json += "null";
}

} // namespace

Format chooseFormat(bool json, const Output &out, Format forPeople)
{
    if (json)
        return Format::Json;
    return out.isTerminal() ? forPeople : Format::TabSeparated;
}

RecordWriter::RecordWriter(Output &out, Format format, std::vector<QStringView> columns)
    : m_out(out), m_format(format), m_columns(std::move(columns))
{
    Record names;
    for (const QStringView column : m_columns)
        names.emplace_back(column.toString());
    if (m_format == Format::Json)
        m_out.write("[");
    else if (m_format == Format::TabSeparated)
        writeTabSeparated(names);
    else if (m_format == Format::Table)
        write(names);
}

void RecordWriter::write(const Record &record, const Extra &extra)
{
    Q_ASSERT(record.size() == m_columns.size());
    switch (m_format) {
    case Format::Json:
        writeJson(record, extra);
        break;
    case Format::TabSeparated:
        writeTabSeparated(record);
        break;
    case Format::Blocks:
        writeBlock(record, extra);
        break;
    case Format::Table:
        std::vector<QString> &row = m_rows.emplace_back();
        std::ranges::transform(
            record, std::back_inserter(row), [](const Value &value) { return printable(textOf(value)); });
        break;
    }
    m_isFirst = false;
}

void RecordWriter::finish()
{
    if (m_format == Format::Json)
        m_out.write(m_isFirst ? "]\n" : "\n]\n");
    else if (m_format == Format::Table)
        writeTable();
}

void RecordWriter::writeJson(const Record &record, const Extra &extra)
{
    QByteArray json = m_isFirst ? "\n" : ",\n";
    char before = '{';
    const auto append = [&](QStringView name, const Value &value) {
        json += before;
        json += before == '{' ? "" : " ";
        before = ',';
        appendJsonString(json, name);
        json += ": ";
        appendJson(json, value);
    };
    for (std::size_t i = 0; i < record.size(); ++i)
        append(m_columns[i], record[i]);
    for (const auto &[name, value] : extra)
        append(name, value);
    json += '}';
    m_out.write(json);
}

void RecordWriter::writeTabSeparated(const Record &record)
{
    QByteArray line;
    for (const Value &value : record)
        line += tabSeparatedField(textOf(value)) + '\t';
    line.back() = '\n';
    m_out.write(line);
}

void RecordWriter::writeBlock(const Record &record, const Extra &extra)
{
    const qsizetype width = std::ranges::max(m_columns, {}, &QStringView::size).size();
    QString block = m_isFirst ? QString() : u"\n"_s;
    const auto append = [&](QStringView name, const Value &value) {
        block += (name.toString() + u':').leftJustified(width + 2) + printable(textOf(value)) + u'\n';
    };
    for (std::size_t i = 0; i < record.size(); ++i)
        append(m_columns[i], record[i]);
    for (const auto &[name, value] : extra)
        append(name, value);
    m_out.write(block.toUtf8());
}

void RecordWriter::writeTable()
{
    // A text of a megabyte must not pad every other row to its width.
    constexpr int WidestColumn = 200;
    std::vector<int> widths(m_columns.size());
    for (const std::vector<QString> &row : m_rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::clamp(displayWidth(row[i]), widths[i], WidestColumn);
    }
    for (const std::vector<QString> &row : m_rows) {
        QString line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            const bool isLast = i + 1 == row.size();
            line += isLast ? u"\n"_s : QString(std::max(widths[i] - displayWidth(row[i]), 0) + 2, u' ');
        }
        m_out.write(line.toUtf8());
    }
}

} // namespace ravlin::cli
