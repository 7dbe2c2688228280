// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/namecheck.h"

#include "core/platform/path.h"
#include "core/platform/textsafety.h"

#include <algorithm>

namespace ravlin::platform {
namespace {

bool isUnfit(QChar c)
{
    return isControl(c) || isDisguise(c);
}

bool isBlankOrDot(QChar c)
{
    return c == u' ' || c == u'.';
}

bool isForbidden(QChar c)
{
    return Separator == u'\\' && QStringView(uR"(<>:"|?*/\)").contains(c);
}

qsizetype extensionStart(const QString &name, NameKind kind)
{
    const qsizetype dot = kind == NameKind::File ? name.lastIndexOf(u'.') : -1;
    return dot < 0 ? name.size() : dot;
}

bool isReserved(QStringView name)
{
    const QStringView device = name.first(name.contains(u'.') ? name.indexOf(u'.') : name.size()).trimmed();
    const auto is = [device](QStringView other) { return device.compare(other, Qt::CaseInsensitive) == 0; };
    if (is(u"CON") || is(u"PRN") || is(u"AUX") || is(u"NUL") || is(u"CONIN$") || is(u"CONOUT$"))
        return true;
    if (device.size() != 4 ||
        (!device.startsWith(u"COM", Qt::CaseInsensitive) && !device.startsWith(u"LPT", Qt::CaseInsensitive)))
        return false;
    // The superscript digits count too.
    return QStringView(u"123456789\u00B9\u00B2\u00B3").contains(device.back());
}

std::optional<NameProblem> problemOf(const QString &name, NameKind kind)
{
    const QStringView stem = QStringView(name).first(extensionStart(name, kind));
    if (std::all_of(stem.begin(), stem.end(), isBlankOrDot))
        return stem.contains(u'.') ? NameProblem::Dots : NameProblem::Empty;
    if (std::any_of(name.begin(), name.end(), isForbidden))
        return NameProblem::Forbidden;
    if (isReserved(name))
        return NameProblem::Reserved;
    if (nameLength(name) > MaxNameLength)
        return NameProblem::TooLong;
    return {};
}

} // namespace

bool isMp3Name(QStringView name)
{
    return name.endsWith(u".mp3", Qt::CaseInsensitive);
}

qsizetype nameLength(const QString &name)
{
    return Separator == u'\\' ? name.size() : encodePath(name).size();
}

QString visibleName(QString name)
{
    // Bytes that are no text may join to a character once what stood between them is gone.
    for (qsizetype before = -1; before != name.size();) {
        if (Separator == u'/' && !name.isValidUtf16())
            name = decodePath(encodePath(name));
        before = name.size();
        name.removeIf(isUnfit);
    }
    return name;
}

CheckedName checkName(const QString &name, NameKind kind)
{
    QString adjusted = visibleName(name);
    if (const auto problem = problemOf(adjusted, kind); problem && *problem != NameProblem::TooLong)
        return {name, false, problem};
    if (kind == NameKind::Folder) {
        while (isBlankOrDot(adjusted.back()))
            adjusted.chop(1);
    }
    if (adjusted.front() == u'.')
        adjusted.front() = u'_';
    if (nameLength(adjusted) > MaxNameLength)
        return {name, false, NameProblem::TooLong};
    return {adjusted, adjusted != name, {}};
}

QString shortened(const QString &text, qsizetype length)
{
    QString kept = text;
    while (!kept.isEmpty() && nameLength(kept) > length) {
        const bool isPair =
            kept.size() > 1 && kept.back().isLowSurrogate() && kept.at(kept.size() - 2).isHighSurrogate();
        kept.chop(isPair ? 2 : 1);
    }
    return kept;
}

QString numberedName(const QString &name, int number, NameKind kind)
{
    const QString visible = visibleName(name);
    const qsizetype extension = extensionStart(visible, kind);
    const QString end = QStringLiteral(" (%1)").arg(number) + visible.sliced(extension);
    return shortened(visible.first(extension), MaxNameLength - nameLength(end)) + end;
}

} // namespace ravlin::platform
