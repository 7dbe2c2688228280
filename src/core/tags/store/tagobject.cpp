// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagobject.h"

#include "core/tags/record/genres.h"
#include "core/tags/store/writerule.h"

#include <algorithm>

namespace ravlin {

using storage::Segment;
using storage::WriteOptions;
using storage::WriteOutcome;

namespace {

using NewContent = Result<std::optional<std::vector<Segment>>>;

Error withPath(Error error, const QString &path)
{
    if (error.path.isEmpty())
        error.path = path;
    return error;
}

QString v1Text(const id3::V1Fields &fields, FrameKind kind)
{
    switch (kind) {
    case FrameKind::Title:
        return fields.title;
    case FrameKind::LeadArtist:
        return fields.artist;
    case FrameKind::Album:
        return fields.album;
    case FrameKind::Year:
        return fields.year;
    case FrameKind::Comment:
        return fields.comment;
    default:
        return {};
    }
}

/// The frame whose value counts: nullptr if ID3v2 has no such frame with a text.
const id3::Frame *valueFrame(const std::optional<id3::Tag> &tag, FrameKind kind)
{
    const id3::Frame *frame = tag ? tag->programFrame(kind) : nullptr;
    return frame && !frame->text.isEmpty() ? frame : nullptr;
}

} // namespace

Result<void> TagObject::Link(const QString &path)
{
    Close();
    m_path = path;
    // Reading is possible where this is not: through a link that belongs to another user.
    m_held = storage::HeldFile::follow(m_fileSystem, path);
    Result<void> linked = read();
    if (linked)
        m_linkedYear = Year();
    else
        Close();
    return linked;
}

Result<void> TagObject::LinkAgain()
{
    forget();
    return read();
}

Result<std::unique_ptr<platform::File>> TagObject::open()
{
    return m_held ? m_held->open(platform::OpenMode::Read) : m_fileSystem.open(m_path, platform::OpenMode::Read);
}

Result<void> TagObject::read()
{
    auto file = open();
    if (!file)
        return tl::unexpected(file.error());
    auto info = m_held ? m_held->info() : (*file)->info();
    if (info && m_held && storage::mayNeedRecovery(m_fileSystem, *info)) {
        if (Result<void> recovered = storage::recoverFile(m_fileSystem, m_held->place()); !recovered)
            return recovered;
        info = (*file)->info();
    }
    if (!info)
        return tl::unexpected(info.error());
    m_file = std::move(*file);
    m_info = *info;
    if (Result<void> parsed = parse(); !parsed) {
        forget();
        return tl::unexpected(withPath(parsed.error(), m_path));
    }
    return {};
}

void TagObject::Close()
{
    m_path.clear();
    m_held = tl::unexpected(Error{ErrorCode::InvalidArgument, {}, QStringLiteral("no file is linked")});
    forget();
}

void TagObject::forget()
{
    m_file.reset();
    m_info = {};
    m_v2.reset();
    m_v1.reset();
    m_v1Fields = {};
    m_edits.clear();
}

Result<void> TagObject::parse()
{
    auto v1 = id3::readV1Block(*m_file, m_info.size);
    if (!v1)
        return tl::unexpected(v1.error());
    platform::FileSource withoutV1(*m_file, m_info.size - (*v1 ? id3::V1Size : 0));
    auto v2 = id3::Tag::parse(withoutV1, id3::Detail::Everything);
    if (!v2)
        return tl::unexpected(v2.error());
    m_v2 = std::move(*v2);
    m_v1 = std::move(*v1);
    m_v1Fields = m_v1 ? id3::parseV1({m_v1->constData(), static_cast<size_t>(m_v1->size())}) : id3::V1Fields{};
    return {};
}

const id3::FieldEdit *TagObject::edit(FrameKind kind) const
{
    const auto found = m_edits.find(kind);
    return found == m_edits.end() ? nullptr : &found->second;
}

QString TagObject::text(FrameKind kind) const
{
    if (const id3::FieldEdit *edited = edit(kind))
        return edited->text;
    const id3::Frame *frame = valueFrame(m_v2, kind);
    if (!frame)
        return v1Text(m_v1Fields, kind);
    return kind == FrameKind::Year ? id3::yearOf(frame->text) : frame->text;
}

int TagObject::Genre() const
{
    if (const id3::FieldEdit *edited = edit(FrameKind::ContentType))
        return edited->remove ? GenreNone : edited->number;
    const id3::Frame *frame = valueFrame(m_v2, FrameKind::ContentType);
    return frame ? id3::genreNumber(frame->text) : m_v1Fields.genre;
}

int TagObject::Track() const
{
    if (const id3::FieldEdit *edited = edit(FrameKind::TrackNumber))
        return edited->number;
    const id3::Frame *frame = valueFrame(m_v2, FrameKind::TrackNumber);
    return frame ? id3::trackNumber(frame->text) : m_v1Fields.track;
}

bool TagObject::hasPicture() const
{
    return std::ranges::any_of(frames(), [](const id3::Frame &frame) {
        const std::string_view id = frame.header.identifier();
        return id == "APIC" || id.substr(0, 3) == "PIC";
    });
}

const std::vector<id3::Frame> &TagObject::frames() const
{
    static const std::vector<id3::Frame> None;
    return m_v2 ? m_v2->frames() : None;
}

Result<WriteOutcome> TagObject::SaveV1Tag(const WriteOptions &options)
{
    const id3::V1Fields fields{Title(), Artist(), Album(), Year(), Comment(), Track() <= 255 ? Track() : 0, Genre()};
    const QByteArray block = id3::buildV1(fields, m_v1.value_or(QByteArray()));
    const qint64 audioEnd = m_info.size - (m_v1 ? id3::V1Size : 0);
    if (m_v1 && block == *m_v1)
        return write(NewContent(std::nullopt), options);
    return write(std::vector<Segment>{Segment::kept(0, audioEnd), Segment::fresh(block)}, options);
}

Result<WriteOutcome> TagObject::StripV1Tag(const WriteOptions &options)
{
    // Remove all of them: careless programs leave several, and stripping one would uncover the next.
    qint64 end = m_info.size;
    for (std::optional<QByteArray> block = m_v1; block;) {
        end -= id3::V1Size;
        Result<std::optional<QByteArray>> before = id3::readV1Block(*m_file, end);
        if (!before)
            return tl::unexpected(withPath(before.error(), m_path));
        block = std::move(*before);
    }
    if (end == m_info.size)
        return write(NewContent(std::nullopt), options);
    return write(std::vector<Segment>{Segment::kept(0, end)}, options);
}

Result<WriteOutcome> TagObject::SaveV2Tag(const WriteOptions &options, int newVersion)
{
    if (!m_file)
        return write(NewContent(std::nullopt), options);
    // What only ID3v1 has goes into ID3v2 too: put every property. A put of the same value changes nothing.
    id3::FieldEdits edits = m_edits;
    for (const FrameKind kind : {FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album, FrameKind::Year,
             FrameKind::Comment, FrameKind::TrackNumber, FrameKind::ContentType}) {
        if (edits.contains(kind) || valueFrame(m_v2, kind))
            continue;
        const id3::FieldEdit value{
            false, v1Text(m_v1Fields, kind), kind == FrameKind::TrackNumber ? m_v1Fields.track : m_v1Fields.genre};
        const bool none = kind == FrameKind::TrackNumber   ? value.number == 0
                          : kind == FrameKind::ContentType ? value.number == GenreNone
                                                           : value.text.isEmpty();
        if (!none)
            edits[kind] = value;
    }
    if (const auto year = edits.find(FrameKind::Year); year != edits.end() && !year->second.remove)
        year->second.isNewYear = year->second.text != m_linkedYear;
    return write(id3::composeSave(*m_file, m_info.size, m_v2, edits, newVersion), options);
}

Result<WriteOutcome> TagObject::StripV2Tag(const WriteOptions &options)
{
    if (!m_file)
        return write(NewContent(std::nullopt), options);
    return write(id3::composeStrip(*m_file, m_info.size, m_info.size - (m_v1 ? id3::V1Size : 0)), options);
}

Result<void> TagObject::checkWritable()
{
    if (!m_file || !m_held)
        return tl::unexpected(
            m_held ? Error{ErrorCode::InvalidArgument, {}, QStringLiteral("no file is linked")} : m_held.error());
    Result<void> allowed = checkMp3Name(m_held->place().path());
    if (allowed && isV2Cut()) // fields may be missing; the user has not seen what would be lost
        allowed = tl::unexpected(Error{ErrorCode::TagTooLarge, {}, {}});
    if (allowed && m_content == Content::Checked) {
        platform::FileSource source(*m_file, m_info.size);
        allowed = checkMp3Content(source);
    }
    return allowed ? allowed : tl::unexpected(withPath(allowed.error(), m_held->place().path()));
}

Result<WriteOutcome> TagObject::write(const NewContent &content, const WriteOptions &options)
{
    if (const Result<void> allowed = checkWritable(); !allowed)
        return tl::unexpected(allowed.error());
    if (!content)
        return tl::unexpected(withPath(content.error(), m_path));
    if (!*content)
        return WriteOutcome::Unchanged;
    m_file.reset(); // some file systems of Windows don't replace an open file
    Result<WriteOutcome> outcome = storage::rewriteFile(m_fileSystem, *m_held, m_info, **content, options);
    if (outcome && *outcome != WriteOutcome::Unchanged) {
        forget(); // what was parsed is no longer what the file holds
        return outcome;
    }
    if (auto reopened = open())
        m_file = std::move(*reopened);
    else
        Close();
    return outcome;
}

} // namespace ravlin
