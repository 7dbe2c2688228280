// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <tl/expected.hpp>

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace ravlin::cli {

/// An option that a command knows.
struct Option
{
    QStringView name;      ///< with its hyphens: "--title"
    QStringView valueName; ///< placeholder for its value in the help; empty if it takes none
    QStringView help;
};

/// The command line is wrong; the text says why.
struct UsageError
{
    QString text;
};

/// A command's options and operands. Options may come before, between and after operands; "--" ends them. A value is
/// the next argument, whatever it begins with, or follows "=" in the same one. A lone "-" is an operand. Not
/// QCommandLineParser: it accepts -h inside -xh and --h for --help, reads on after --help, and reports neither the
/// first error nor an option as it was written.
class Arguments
{
public:
    /// Parses the words after a command's name, up to an option that ends parsing (help, version).
    static tl::expected<Arguments, UsageError> parse(const QStringList &words, std::span<const Option> options);

    bool has(QStringView option) const { return value(option).has_value(); }
    /// The last value given; empty for an option without one.
    std::optional<QString> value(QStringView option) const;
    const QStringList &operands() const { return m_operands; }
    /// The operands as paths with native separators.
    const QStringList &paths() const { return m_paths; }

private:
    std::vector<std::pair<QStringView, QString>> m_options; ///< names point into the table
    QStringList m_operands;
    QStringList m_paths;
};

inline constexpr Option HelpOption{u"--help", {}, u"show this help"};
inline constexpr Option VersionOption{u"--version", {}, u"show the version"};
inline constexpr Option JsonOption{u"--json", {}, u"print one array of JSON objects"};

} // namespace ravlin::cli
