// SPDX-License-Identifier: GPL-3.0-or-later
// Saving and stripping tags of any file: the audio and all frames that nobody edited stay byte for byte and in order,
// what was put reads back, a second save writes nothing, and after an error the file is unchanged.
//
// An input is eight bytes of commands, the texts to put (the last command byte gives their length, line feeds separate
// them), and the file.
#include "../support/foreignparts.h"
#include "../support/memoryfilesystem.h"
#include "core/tags/id3/framekind.h"
#include "core/tags/id3/id3text.h"
#include "core/tags/id3/transliterate.h"
#include "core/tags/store/tagobject.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using ravlin::FrameKind;
using ravlin::Result;
using ravlin::TagObject;
using ravlin::storage::WriteOutcome;
using ravlin::test::foreignParts;
using ravlin::test::MemoryFileSystem;

namespace {

constexpr qsizetype CommandSize = 8;
constexpr std::array<FrameKind, 5> TextKinds{
    FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album, FrameKind::Comment, FrameKind::Year};

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::abort();
}

QString path()
{
    return QStringLiteral("/a.mp3");
}

/// One put or removal.
struct Edit
{
    FrameKind kind = FrameKind::Other;
    bool remove = false;
    QString text;
    int number = 0;
};

struct Input
{
    int operation = 0; ///< 0 SaveV1Tag, 1 SaveV2Tag, 2 StripV1Tag, 3 StripV2Tag
    QList<Edit> edits;
    QByteArray file;
};

QString yearIn(const QString &text)
{
    QString digits;
    for (const QChar c : text)
        digits += QChar(u'0' + c.unicode() % 10);
    return digits.leftJustified(4, u'0', true);
}

Input parseInput(const QByteArray &bytes)
{
    Input input;
    const auto command = [&bytes](qsizetype index) { return static_cast<unsigned char>(bytes[index]); };
    input.operation = command(0) & 3;
    const qsizetype textSize = std::min<qsizetype>(command(7) * 4, bytes.size() - CommandSize);
    const QStringList texts = QString::fromUtf8(bytes.mid(CommandSize, textSize)).split(u'\n');
    for (size_t i = 0; i < TextKinds.size(); ++i) {
        if ((command(1) >> i & 1) == 0)
            continue;
        Edit edit{TextKinds[i], (command(2) >> i & 1) != 0, texts.at(static_cast<qsizetype>(i) % texts.size()), 0};
        if (edit.kind == FrameKind::Year)
            edit.text = yearIn(edit.text);
        if (edit.remove || !edit.text.isEmpty())
            input.edits += edit;
    }
    if ((command(1) & 0x20) != 0)
        input.edits += Edit{FrameKind::TrackNumber, (command(2) & 0x20) != 0, {}, command(3) % 100};
    if ((command(1) & 0x40) != 0)
        input.edits += Edit{FrameKind::ContentType, (command(2) & 0x40) != 0, {}, command(4) % 126};
    input.file = bytes.mid(CommandSize + textSize);
    return input;
}

void apply(TagObject &object, const QList<Edit> &edits)
{
    for (const Edit &edit : edits) {
        if (edit.remove) {
            object.removeFrames(edit.kind);
            continue;
        }
        switch (edit.kind) {
        case FrameKind::Title:
            object.setTitle(edit.text);
            break;
        case FrameKind::LeadArtist:
            object.setArtist(edit.text);
            break;
        case FrameKind::Album:
            object.setAlbum(edit.text);
            break;
        case FrameKind::Comment:
            object.setComment(edit.text);
            break;
        case FrameKind::Year:
            object.setYear(edit.text);
            break;
        case FrameKind::TrackNumber:
            object.setTrack(edit.number);
            break;
        default:
            object.setGenre(edit.number);
            break;
        }
    }
}

QString textOf(const TagObject &object, FrameKind kind)
{
    switch (kind) {
    case FrameKind::Title:
        return object.Title();
    case FrameKind::LeadArtist:
        return object.Artist();
    case FrameKind::Album:
        return object.Album();
    case FrameKind::Comment:
        return object.Comment();
    default:
        return object.Year();
    }
}

/// The text as a tag returns it: valid Unicode without zero characters.
QString storedForm(const QString &text)
{
    const QByteArray body = ravlin::id3::encodeTextBody({text}, 3);
    return ravlin::id3::decodeTextBody({body.constData(), static_cast<size_t>(body.size())}).text;
}

Result<WriteOutcome> run(MemoryFileSystem &files, const Input &input)
{
    TagObject object(files);
    require(object.Link(path()).has_value(), "any file can be read");
    apply(object, input.edits);
    switch (input.operation) {
    case 0:
        return object.SaveV1Tag();
    case 1:
        return object.SaveV2Tag();
    case 2:
        return object.StripV1Tag();
    default:
        return object.StripV2Tag();
    }
}

std::optional<ravlin::id3::Tag> tagIn(MemoryFileSystem &files)
{
    const auto file = files.open(path(), ravlin::platform::OpenMode::Read);
    const auto tag = ravlin::test::tagOf(**file, files.content(path()).size());
    require(tag.has_value(), "any file can be parsed");
    return *tag;
}

/// Bytes that the tag takes up, at most the whole file.
qint64 regionOf(const std::optional<ravlin::id3::Tag> &tag, const QByteArray &file)
{
    return tag ? std::min<qint64>(tag->header().regionSize(), file.size()) : 0;
}

void checkPutsReadBack(const TagObject &object, const Input &input)
{
    for (const Edit &edit : input.edits) {
        if (edit.kind == FrameKind::TrackNumber)
            require(object.Track() == (edit.remove ? object.Track() : edit.number), "the track is read back");
        else if (edit.kind == FrameKind::ContentType)
            require(edit.remove || object.Genre() == edit.number, "the genre is read back");
        else if (!edit.remove && !storedForm(edit.text).isEmpty())
            require(textOf(object, edit.kind) == storedForm(edit.text), "the text is read back");
    }
}

/// The kinds that a save may change: those put, and those that only ID3v1 has, which ID3v2 adopts.
std::vector<FrameKind> changedKinds(const Input &input, const TagObject &before)
{
    std::vector<FrameKind> kinds;
    for (const Edit &edit : input.edits)
        kinds.push_back(edit.kind);
    if (before.HasV1Tag())
        kinds.insert(kinds.end(), TextKinds.begin(), TextKinds.end());
    if (before.HasV1Tag())
        kinds.insert(kinds.end(), {FrameKind::TrackNumber, FrameKind::ContentType});
    return kinds;
}

void checkSavedV2(MemoryFileSystem &files, const Input &input)
{
    const QByteArray after = files.content(path());
    MemoryFileSystem old;
    old.put(path(), input.file);
    TagObject before(old);
    require(before.Link(path()).has_value(), "the old file is readable");
    TagObject object(files);
    require(object.Link(path()).has_value(), "the new file is readable");
    const auto oldTag = tagIn(old);
    require(object.HasV1Tag() == before.HasV1Tag(), "ID3v1 comes and goes with its own saves only");
    const auto newTag = tagIn(files);
    const QByteArray audio = input.file.mid(regionOf(oldTag, input.file));
    require(after.endsWith(audio), "the audio is as before");
    const qint64 newRegion = after.size() - audio.size();
    if (newRegion > 0) {
        require(newTag && regionOf(newTag, after) == newRegion, "the tag ends where the audio begins");
        const auto kinds = changedKinds(input, before);
        require(foreignParts(oldTag, input.file, kinds) == foreignParts(newTag, after, kinds),
            "frames that nobody edited are as before");
    } else {
        require(foreignParts(oldTag, input.file, changedKinds(input, before)).isEmpty(), "no frame is lost");
    }
    checkPutsReadBack(object, input);
}

void checkSavedV1(const MemoryFileSystem &files, const Input &input, bool hadV1)
{
    const QByteArray after = files.content(path());
    const QByteArray audio = hadV1 ? input.file.chopped(ravlin::id3::V1Size) : input.file;
    require(after.size() == audio.size() + ravlin::id3::V1Size, "the tag is 128 bytes");
    require(after.startsWith(audio), "all before the tag is as it was");
    const ravlin::id3::V1Fields fields =
        ravlin::id3::parseV1({after.constData() + audio.size(), static_cast<size_t>(ravlin::id3::V1Size)});
    for (const Edit &edit : input.edits) {
        if (edit.kind == FrameKind::Title && !edit.remove && !storedForm(edit.text).trimmed().isEmpty())
            require(!fields.title.isEmpty(), "a title is never written blank");
    }
}

/// In a file of little more than a tag, content that moves may end up where ID3v1 is looked for.
bool mayMakeV1(const Input &input, const std::optional<ravlin::id3::Tag> &tag)
{
    const qint64 rest = input.file.size() - regionOf(tag, input.file);
    return input.operation == 1 && rest < ravlin::id3::V1Size + 3 && input.file.contains("TAG");
}

void check(MemoryFileSystem &files, const Input &input, bool hadV1)
{
    switch (input.operation) {
    case 0:
        return checkSavedV1(files, input, hadV1);
    case 1:
        return checkSavedV2(files, input);
    case 2:
        return require(files.content(path()) == (hadV1 ? input.file.chopped(ravlin::id3::V1Size) : input.file),
            "only ID3v1 is gone");
    default:
        return require(input.file.endsWith(files.content(path())), "only the start is gone");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < static_cast<size_t>(CommandSize))
        return 0;
    const Input input = parseInput(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)));
    MemoryFileSystem files;
    files.put(path(), input.file);
    TagObject object(files);
    require(object.Link(path()).has_value(), "any file can be read");
    const bool hadV1 = object.HasV1Tag();
    if (mayMakeV1(input, tagIn(files)))
        return 0;

    const Result<WriteOutcome> saved = run(files, input);
    require(files.fileCount() == 1, "nothing is left behind");
    if (!saved) {
        const ravlin::ErrorCode code = saved.error().code;
        require(
            code == ravlin::ErrorCode::BrokenTag || code == ravlin::ErrorCode::TooLarge, "the error tells of the tag");
        require(files.content(path()) == input.file, "after an error the file is as it was");
        return 0;
    }
    check(files, input, hadV1);
    const QByteArray once = files.content(path());
    // The same again: only a second tag that stripping uncovered is left to do.
    const Result<WriteOutcome> again = run(files, input);
    if (input.operation <= 1)
        require(again.has_value() && *again == WriteOutcome::Unchanged && files.content(path()) == once,
            "a second save writes nothing");
    return 0;
}
