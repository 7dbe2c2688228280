// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/updateaddress.h"

#include "core/online/web/webroute.h"
#include "core/platform/namecheck.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView VersionFilePath = u"/ravlin/app/ravlin.ver";

tl::unexpected<UpdateFailure> failure(UpdateFailureKind kind, const QString &detail)
{
    return tl::unexpected(UpdateFailure{kind, detail});
}

/// A character that a system or a reader could take for something else.
bool isOdd(QChar character)
{
    return QStringView(u"/\\:*?\"<>|").contains(character) || character.category() == QChar::Other_Control ||
           character.category() == QChar::Other_Format || character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph;
}

bool isTextWhole(const QString &text)
{
    return QString::fromUtf8(text.toUtf8()) == text; // no half characters
}

} // namespace

QString updateAddress()
{
    const QString told = qEnvironmentVariable("RAVLIN_UPDATE_URL");
    return told.isEmpty() ? QStringLiteral(RAVLIN_UPDATE_URL) : told;
}

UpdateResult<QUrl> versionFileUrl(const QString &baseAddress)
{
    if (baseAddress.trimmed().isEmpty())
        return failure(UpdateFailureKind::NoAddress, {});
    QUrl url(baseAddress.trimmed(), QUrl::StrictMode);
    if (!isWebAddress(url) || url.hasQuery() || url.hasFragment())
        return failure(UpdateFailureKind::BadAddress, baseAddress);
    QString path = url.path(QUrl::FullyEncoded);
    while (path.endsWith(u'/'))
        path.chop(1);
    url.setPath(path + VersionFilePath.toString(), QUrl::TolerantMode);
    return url;
}

UpdateResult<QUrl> downloadUrl(const QUrl &versionFile, const VersionRecord &record)
{
    QUrl url = versionFile.resolved(QUrl(record.location.trimmed()));
    if (record.location.trimmed().isEmpty())
        url = versionFile.resolved(QUrl(u"./"_s));
    url.setFragment({});
    const bool isLessSecure = versionFile.scheme() == u"https"_s && url.scheme() != u"https"_s;
    if (!isWebAddress(url) || isLessSecure)
        return failure(UpdateFailureKind::BadLocation, record.location);
    const QString path = url.path(QUrl::FullyEncoded);
    if (path.isEmpty() || path.endsWith(u'/')) {
        const QString name = QString::fromLatin1(QUrl::toPercentEncoding(record.fileName));
        url.setPath((path.isEmpty() ? u"/"_s : path) + name, QUrl::TolerantMode);
    }
    return url;
}

QUrl checksumUrl(const QUrl &file)
{
    QUrl url = file;
    url.setPath(file.path(QUrl::FullyEncoded) + u".sha256"_s, QUrl::TolerantMode);
    return url;
}

UpdateResult<QString> safeFileName(const QString &name)
{
    const platform::CheckedName checked = platform::checkName(name, platform::NameKind::File);
    const bool isPlain = !checked.problem && !checked.isAdjusted && isTextWhole(name) &&
                         std::none_of(name.begin(), name.end(), isOdd) && !name.endsWith(u'.') &&
                         !name.front().isSpace() && !name.back().isSpace() && !name.startsWith(u'-');
    if (!isPlain)
        return failure(UpdateFailureKind::BadName, name);
    return name;
}

} // namespace ravlin
