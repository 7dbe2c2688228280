// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/arguments.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

const Option *findOption(std::span<const Option> options, QStringView name)
{
    const auto found = std::ranges::find(options, name == u"-h" ? HelpOption.name : name, &Option::name);
    return found == options.end() ? nullptr : &*found;
}

UsageError unknownOption(QStringView name)
{
    return {u"unknown option %1; a name that begins with a hyphen goes behind --"_s.arg(name)};
}

} // namespace

tl::expected<Arguments, UsageError> Arguments::parse(const QStringList &words, std::span<const Option> options)
{
    Arguments arguments;
    for (qsizetype i = 0; i < words.size(); ++i) {
        const QString &word = words[i];
        if (word == u"--") {
            arguments.m_operands += words.sliced(i + 1);
            break;
        }
        if (word.size() < 2 || !word.startsWith(u'-')) {
            arguments.m_operands += word;
            continue;
        }
        const qsizetype equals = word.indexOf(u'=');
        const QStringView name = QStringView(word).first(equals < 0 ? word.size() : equals);
        const Option *option = findOption(options, name);
        if (option == nullptr)
            return tl::unexpected(unknownOption(name));
        const bool takesValue = !option->valueName.isEmpty();
        if (!takesValue && equals >= 0)
            return tl::unexpected(UsageError{u"option %1 takes no value"_s.arg(name)});
        if (takesValue && equals < 0 && i + 1 == words.size())
            return tl::unexpected(UsageError{u"option %1 needs a value"_s.arg(name)});
        QString value;
        if (takesValue)
            value = equals >= 0 ? word.sliced(equals + 1) : words[++i];
        arguments.m_options.emplace_back(option->name, value);
        if (option->name == HelpOption.name || option->name == VersionOption.name)
            break;
    }
    for (const QString &operand : arguments.m_operands)
        arguments.m_paths += QDir::toNativeSeparators(operand);
    return arguments;
}

std::optional<QString> Arguments::value(QStringView option) const
{
    const auto found = std::find_if(
        m_options.rbegin(), m_options.rend(), [option](const auto &given) { return given.first == option; });
    if (found == m_options.rend())
        return std::nullopt;
    return found->second;
}

} // namespace ravlin::cli
