// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/programstate.h"

#include "core/app/settings.h"
#include "core/platform/path.h"

#include <QDir>

#include <algorithm>
#include <array>

namespace ravlin {

namespace {

constexpr QStringView TagVersionKey = u"id3v2 version"; // "3" or "4"
constexpr QStringView KeepTimesKey = u"keep times";     // "si" or "no"
constexpr QStringView DoubleClickKey = u"double click"; // "open" or "edit"
constexpr QStringView HiddenColumnsKey = u"hidden columns";
constexpr QStringView HistoryDaysKey = u"historia dias";
constexpr QStringView HistoryMegabytesKey = u"historia megas";

/// The protections, all "si" or "no".
struct ProtectionKey
{
    QStringView key;
    bool FurtherOptions::*option = nullptr;
};
constexpr std::array<ProtectionKey, 4> ProtectionKeys{{{u"cuida campos", &FurtherOptions::onlyEditedFields},
    {u"cuida seleccion", &FurtherOptions::keepSelection}, {u"cuida subcarpetas", &FurtherOptions::keepSubfolders},
    {u"cuida papelera", &FurtherOptions::skipTrashFolders}}};

/// A number from 1 to most.
int numberFrom(const QString &text, int most, int fallback)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber && number > 0 ? std::min(number, most) : fallback;
}

} // namespace

namespace defaults {

constinit const QStringView Mail = u"" RAVLIN_CONTACT;
constinit const QStringView WebSite = u"" RAVLIN_HOMEPAGE;

} // namespace defaults

QString textOrDefault(const QString &text, QStringView fallback)
{
    return text.isEmpty() ? fallback.toString() : text;
}

QString cdServer(const Settings &settings)
{
    return textOrDefault(settings.read(settingskey::Servidor), defaults::Server);
}

QString cdMail(const Settings &settings)
{
    return textOrDefault(settings.read(settingskey::Correo), defaults::Mail);
}

std::optional<int> tagSaveModeFromText(QStringView text)
{
    if (text.size() != 1)
        return std::nullopt;
    const int mode = text.front().unicode() - u'0';
    if (mode < FirstTagSaveMode || mode > LastTagSaveMode)
        return std::nullopt;
    return mode;
}

FurtherOptions FurtherOptions::restored(const Settings &settings)
{
    FurtherOptions options;
    if (settings.read(TagVersionKey) == QStringLiteral("4"))
        options.newTagVersion = 4;
    options.keepFileTimes = settings.read(KeepTimesKey) == QStringLiteral("si");
    if (settings.read(DoubleClickKey) == QStringLiteral("edit"))
        options.doubleClick = DoubleClick::Edit;
    options.hiddenColumns = settings.read(HiddenColumnsKey);
    for (const ProtectionKey &protection : ProtectionKeys)
        options.*protection.option = settings.read(protection.key) == QStringLiteral("si");
    options.historyDays = numberFrom(settings.read(HistoryDaysKey), MostHistoryDays, DefaultHistoryDays);
    options.historyMegabytes =
        numberFrom(settings.read(HistoryMegabytesKey), MostHistoryMegabytes, DefaultHistoryMegabytes);
    return options;
}

bool FurtherOptions::hasProtections(const Settings &settings)
{
    return std::ranges::any_of(ProtectionKeys,
        [&settings](const ProtectionKey &protection) { return !settings.read(protection.key).isEmpty(); });
}

void FurtherOptions::store(Settings &settings) const
{
    const FurtherOptions stored = restored(settings);
    if (newTagVersion != stored.newTagVersion)
        settings.write(TagVersionKey, QString::number(newTagVersion));
    if (keepFileTimes != stored.keepFileTimes)
        settings.write(KeepTimesKey, keepFileTimes ? QStringLiteral("si") : QStringLiteral("no"));
    if (doubleClick != stored.doubleClick)
        settings.write(
            DoubleClickKey, doubleClick == DoubleClick::Edit ? QStringLiteral("edit") : QStringLiteral("open"));
    if (hiddenColumns != stored.hiddenColumns)
        settings.write(HiddenColumnsKey, hiddenColumns);
    for (const ProtectionKey &protection : ProtectionKeys) {
        if (this->*protection.option != stored.*protection.option)
            settings.write(protection.key, this->*protection.option ? QStringLiteral("si") : QStringLiteral("no"));
    }
    if (historyDays != stored.historyDays)
        settings.write(HistoryDaysKey, QString::number(historyDays));
    if (historyMegabytes != stored.historyMegabytes)
        settings.write(HistoryMegabytesKey, QString::number(historyMegabytes));
}

QString folderOfCommandLine(const QString &commandLine, const QString &workingFolder)
{
    QString path = commandLine;
    // A name may end in a quote where the system has no other use for it.
    if (path.startsWith(u'"') && path.endsWith(u'"'))
        path = path.mid(1, path.size() - 2);
    if (path.startsWith(u"file:/", Qt::CaseInsensitive)) {
        if (const QString named = droppedAddress(QUrl(path)).path; !named.isEmpty())
            path = QDir::toNativeSeparators(named);
    }
    if (!path.isEmpty() && !workingFolder.isEmpty())
        path = QDir::toNativeSeparators(QDir::cleanPath(QDir(workingFolder).absoluteFilePath(path)));
    if (!path.endsWith(QStringLiteral(".mp3"), Qt::CaseInsensitive))
        return path;
    return path.left(std::max<qsizetype>(platform::nameStart(path), 1));
}

DroppedAddress droppedAddress(const QUrl &url)
{
    if (!url.isLocalFile())
        return {};
    if (!url.host().isEmpty() && url.host() != QStringLiteral("localhost"))
        return {{}, url.host()};
    // As bytes: they need not be Unicode.
    QString path = platform::decodePath(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toUtf8()));
    if (path.contains(QChar::Null))
        return {}; // for the system it would end there
    const auto isSeparator = [](QChar c) { return c == u'/' || c == platform::Separator; };
    // Two separators in front of a name mean another computer on Windows, and nothing on other systems.
    if (path.size() > 1 && isSeparator(path[0]) && isSeparator(path[1])) {
        const auto isName = [&](QChar c) { return !isSeparator(c); };
        const auto start = std::find_if(path.begin(), path.end(), isName);
        return {{}, QString(start, std::find_if(start, path.end(), isSeparator) - start)};
    }
    // "/C:/folder"
    if (platform::Separator == u'\\' && path.size() > 2 && path[2] == u':')
        path.remove(0, 1);
    return {path, {}};
}

} // namespace ravlin
