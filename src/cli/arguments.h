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
    QStringView valueName; ///< what stands for its value in the help; empty for an option without value
    QStringView help;
};

/// The command line makes no sense; the text says why.
struct UsageError
{
    QString text;
};

/// A command's options and operands. Options may stand before, between and behind the operands; "--" ends them. A value
/// follows as the next argument, whatever that begins with, or in the same one behind "=". A lone "-" is an operand.
class Arguments
{
public:
    /// The words behind a command's name. When an option of those that end the reading (help, version) is met, what
    /// follows it is not looked at.
    static tl::expected<Arguments, UsageError> parse(const QStringList &words, std::span<const Option> options);

    bool has(QStringView option) const { return value(option).has_value(); }
    /// The value given last; the empty text for an option without value.
    std::optional<QString> value(QStringView option) const;
    const QStringList &operands() const { return m_operands; }
    /// The operands as paths, with the platform's separators.
    const QStringList &paths() const { return m_paths; }

private:
    std::vector<std::pair<QStringView, QString>> m_options; ///< names are those of the table
    QStringList m_operands;
    QStringList m_paths;
};

inline constexpr Option HelpOption{u"--help", {}, u"show this help"};
inline constexpr Option VersionOption{u"--version", {}, u"show the version"};
inline constexpr Option JsonOption{u"--json", {}, u"print one array of JSON objects"};

} // namespace ravlin::cli
