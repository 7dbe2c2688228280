// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/versionfile.h"

#include "core/online/update/sequentialtext.h"
#include "core/platform/textsafety.h"

#include <QRegularExpression>

#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

bool isVersion(const QString &text)
{
    static const QRegularExpression form(u"\\A[0-9]{1,9}(\\.[0-9]{1,9}){0,3}\\z"_s);
    return form.match(text).hasMatch();
}

std::optional<VersionRecord> readRecord(SequentialReader &reader)
{
    std::array<QString, 5> fields; // the fifth is unused
    for (QString &text : fields) {
        auto field = reader.field();
        if (!field)
            return {};
        text = std::move(*field);
    }
    return VersionRecord{fields[0], platform::withoutControls(fields[1]), fields[2], fields[3]};
}

tl::unexpected<UpdateFailure> badFile(const QString &detail)
{
    return tl::unexpected(UpdateFailure{UpdateFailureKind::BadVersionFile, detail});
}

} // namespace

UpdateResult<VersionFile> VersionFile::parse(QByteArrayView bytes)
{
    if (bytes.size() > MaximumSize)
        return badFile(u"more than 64 KB"_s);
    SequentialReader reader(bytes);
    const auto version = reader.field();
    const auto unused = reader.field();
    if (!version || !unused || !isVersion(*version))
        return badFile(u"no version at its beginning"_s);
    VersionFile file;
    file.version = *version;
    for (int count = 0; count < MaximumRecords && !reader.atEnd(); ++count) {
        const std::optional<VersionRecord> record = readRecord(reader);
        if (!record)
            break;
        if (!record->fileName.isEmpty())
            file.records.push_back(*record);
    }
    return file;
}

QString runningVersion()
{
    return QStringLiteral(RAVLIN_VERSION);
}

bool isNewerVersion(const QString &offered, const QString &running)
{
    return offered > running;
}

} // namespace ravlin
