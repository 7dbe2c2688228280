// SPDX-License-Identifier: GPL-3.0-or-later
// Reads and saves tags as the program does, for tests against other programs.
//     tag_tool read FILE...                       one line of JSON for each file
//     tag_tool save MODE FILE field=value...      reads the file, sets the fields, saves; "=" alone saves as read
//     RAVLIN_NEW_TAG_VERSION=4                    in the environment: new ID3v2 tags are ID3v2.4
#include "core/platform/filesystem.h"
#include "core/tags/store/tagstore.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <cstdio>

using namespace ravlin;

namespace {

QString *fieldOf(TagRecord &record, const QString &name)
{
    const std::pair<QLatin1String, QString *> fields[] = {{QLatin1String("title"), &record.Title},
        {QLatin1String("artist"), &record.Artist}, {QLatin1String("album"), &record.Album},
        {QLatin1String("year"), &record.Year}, {QLatin1String("comment"), &record.Comment},
        {QLatin1String("track"), &record.Track}, {QLatin1String("genre"), &record.Genre}};
    for (const auto &[key, field] : fields) {
        if (key == name)
            return field;
    }
    return nullptr;
}

int fail(const QString &message)
{
    std::fprintf(stderr, "%s\n", qPrintable(message));
    return 1;
}

int read(TagStore &store, const QStringList &paths)
{
    for (const QString &path : paths) {
        TagRecord record;
        const Result<void> result = store.ReadTag(path, record);
        if (!result && result.error().code != ErrorCode::GenreOutOfRange)
            return fail(result.error().detail);
        const QJsonObject object{{QStringLiteral("title"), record.Title}, {QStringLiteral("artist"), record.Artist},
            {QStringLiteral("album"), record.Album}, {QStringLiteral("year"), record.Year},
            {QStringLiteral("comment"), record.Comment}, {QStringLiteral("track"), record.Track},
            {QStringLiteral("genre"), record.Genre}, {QStringLiteral("hasV1"), record.HasV1},
            {QStringLiteral("hasV2"), record.HasV2}};
        std::puts(QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
    }
    return 0;
}

int save(TagStore &store, const QString &path, const QStringList &edits)
{
    TagRecord record;
    if (const Result<void> result = store.ReadTag(path, record); !result)
        return fail(result.error().detail);
    for (const QString &edit : edits) {
        QString *field = fieldOf(record, edit.section(u'=', 0, 0));
        if (field)
            *field = edit.section(u'=', 1);
        else if (edit != u"=")
            return fail(QStringLiteral("no such field: ") + edit);
    }
    const Result<void> result = store.SaveTag(path, record);
    return result ? 0 : fail(result.error().detail);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().sliced(1);
    ProgramState state;
    state.freeMegabytes = 1 << 20;
    if (qEnvironmentVariableIntValue("RAVLIN_NEW_TAG_VERSION") == 4)
        state.options.newTagVersion = 4;
    TagStore store(state, platform::FileSystem::native());
    if (arguments.size() >= 2 && arguments[0] == u"read")
        return read(store, arguments.sliced(1));
    if (arguments.size() >= 4 && arguments[0] == u"save") {
        state.tagSaveMode = arguments[1].toInt();
        return save(store, arguments[2], arguments.sliced(3));
    }
    return fail(QStringLiteral("usage: tag_tool read FILE... | save MODE FILE field=value..."));
}
