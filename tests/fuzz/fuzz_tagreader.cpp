// SPDX-License-Identifier: GPL-3.0-or-later
// Reading tags accepts any bytes: it ends, its memory is bounded by the file's size, and the reader of the file list
// returns what the tag object reads.
#include "../support/memoryfilesystem.h"
#include "core/tags/store/listreader.h"
#include "core/tags/store/tagobject.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

QString trackText(int track)
{
    return track == 0 ? QString() : QString::number(track);
}

void checkFrames(const ravlin::TagObject &object, qsizetype fileSize)
{
    qint64 end = ravlin::id3::TagHeaderSize;
    qsizetype characters = 0;
    for (const ravlin::id3::Frame &frame : object.frames()) {
        require(frame.header.offset >= end, "frames follow each other");
        require(frame.header.end >= frame.header.offset + frame.header.size(), "frames have the size that they state");
        end = frame.header.end;
        require(end <= fileSize, "frames lie inside the file");
        characters += frame.text.size() + frame.description.size();
    }
    require(2 * characters <= ravlin::id3::MaximumHeldSize, "texts are bounded");
    require(object.frames().size() <= ravlin::id3::MaximumFrameCount, "frames are bounded");
}

/// Whether the list shows that text.
bool shows(const QString &listed, const QString &text)
{
    if (text.size() <= ravlin::id3::MaximumListText)
        return listed == text;
    return listed.size() == ravlin::id3::MaximumListText + 1 && text.startsWith(QStringView(listed).chopped(1));
}

void checkListed(const ravlin::ListFields &listed, const ravlin::TagObject &object)
{
    require(shows(listed.title, object.Title()), "the list has the same title");
    require(shows(listed.artist, object.Artist()), "the list has the same artist");
    require(shows(listed.album, object.Album()), "the list has the same album");
    // A number may stand behind more blanks than the list reads.
    if (object.Year().size() + ravlin::id3::V1Size > ravlin::id3::MaximumListText)
        return;
    require(listed.year == object.Year(), "the list has the same year");
    require(listed.track == trackText(object.Track()), "the list has the same track");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = QStringLiteral("/a.mp3");
    ravlin::test::MemoryFileSystem files;
    files.put(path, QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));

    ravlin::TagObject object(files);
    require(object.Link(path).has_value(), "any file can be read");
    checkFrames(object, static_cast<qsizetype>(size));

    const auto file = files.open(path, ravlin::platform::OpenMode::Read);
    const ravlin::Result<ravlin::ListFields> listed = ravlin::readListFields(**file);
    require(listed.has_value(), "any file can be listed");
    require(listed->hasV1 == object.HasV1Tag(), "the list has the same ID3v1");
    require(listed->hasV2 == object.HasV2Tag(), "the list has the same ID3v2");
    require(!listed->isCut || object.isV2Cut(), "the list reads no less than the tag object");
    if (!listed->isCut && !object.isV2Cut())
        checkListed(*listed, object);
    require(object.Genre() >= 0 && object.Genre() <= 255, "a genre is a byte");
    return 0;
}
