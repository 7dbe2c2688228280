// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What tests of batches over tags have in common.
namespace ravlin::test {

/// Keeps the rows that a batch reported.
class ProgressRecorder
{
public:
    operator ProgressReport()
    {
        return [this](const Progress &now) { paths << now.path; };
    }

    QStringList paths;
};

/// The state of a program with room on its disk.
inline ProgramState roomyState(int mode = DefaultTagSaveMode)
{
    ProgramState state;
    state.tagSaveMode = mode;
    state.freeMegabytes = 100000;
    return state;
}

/// A file's tag as the program reads it. Ends the test program if it cannot be read.
inline TagRecord readRecord(const QString &path)
{
    ProgramState state;
    const TagStore store(state, platform::FileSystem::native());
    TagRecord record;
    if (const Result<void> read = store.ReadTag(path, record); !read && read.error().code != ErrorCode::GenreOutOfRange)
        qFatal("cannot read %s", qPrintable(path));
    return record;
}

/// Writes a record into a file in mode 2. Ends the test program if that fails.
inline void writeRecord(const QString &path, const TagRecord &record)
{
    ProgramState state = roomyState();
    TagStore store(state, platform::FileSystem::native());
    if (!store.SaveTag(path, record))
        qFatal("cannot write %s", qPrintable(path));
}

/// A file of that name with an ID3v2 tag that holds the record, and some audio.
inline QString taggedFile(const QString &folder, const QString &name, const TagRecord &record)
{
    const QString path = writeFile(folder, name, audio());
    writeRecord(path, record);
    return path;
}

/// What lies between a file's ID3v2 tag at the start and its ID3v1 tag at the end.
inline QByteArray audioOf(const QString &path)
{
    QByteArray content = readFile(path);
    content.remove(0, regionSize(content));
    constexpr qsizetype V1Size = 128;
    if (content.last(qMin(content.size(), V1Size)).startsWith("TAG"))
        content.chop(V1Size);
    return content;
}

} // namespace ravlin::test
