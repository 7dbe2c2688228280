// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/tagobject.h"

#include "core/tags/id3/composedcontent.h"
#include "core/tags/record/genres.h"
#include "core/tags/store/writerule.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ravlin {

using storage::Segment;
using storage::WriteOptions;
using storage::WriteOutcome;

namespace {

constexpr std::array<std::pair<FrameKind, QString id3::V1Fields::*>, 5> V1Texts{
    {{FrameKind::Title, &id3::V1Fields::title}, {FrameKind::LeadArtist, &id3::V1Fields::artist},
        {FrameKind::Album, &id3::V1Fields::album}, {FrameKind::Year, &id3::V1Fields::year},
        {FrameKind::Comment, &id3::V1Fields::comment}}};

/// The content of a file, or what was composed of it.
class Source
{
    Q_DISABLE_COPY_MOVE(Source)

public:
    Source(platform::ByteSource &file, const std::optional<std::vector<Segment>> &composed) : m_file(file)
    {
        if (composed)
            m_composed.emplace(m_file, *composed);
    }
    ~Source() = default;
    platform::ByteSource &get() { return m_composed ? *m_composed : m_file; }

private:
    platform::ByteSource &m_file;
    std::optional<id3::ComposedContent> m_composed;
};

/// The first bytes of a source.
class Start final : public platform::ByteSource
{
public:
    Start(platform::ByteSource &all, qint64 size) : m_all(all), m_size(size) {}
    qint64 size() const override { return m_size; }
    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override { return m_all.readAt(buffer, offset); }

private:
    platform::ByteSource &m_all;
    qint64 m_size;
};

Error withPath(Error error, const QString &path)
{
    if (error.path.isEmpty())
        error.path = path;
    return error;
}

QString v1Text(const id3::V1Fields &fields, FrameKind kind)
{
    const auto *const found = std::ranges::find(V1Texts, kind, &std::pair<FrameKind, QString id3::V1Fields::*>::first);
    return found == V1Texts.end() ? QString() : fields.*(found->second);
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
    if (info && m_held) {
        const Result<bool> recovered = storage::recoverFile(m_fileSystem, m_held->place(), *info);
        // It can be read, but nothing may be built on it before somebody has settled what it is to hold.
        m_unsettled = !recovered && recovered.error().code == ErrorCode::Interrupted ? std::optional(recovered.error())
                                                                                     : std::nullopt;
        if (!recovered && !m_unsettled)
            return tl::unexpected(recovered.error());
        if (recovered && *recovered)
            info = (*file)->info();
    }
    if (!info)
        return tl::unexpected(info.error());
    m_file = std::move(*file);
    m_info = *info;
    m_source.emplace(*m_file, m_info.size);
    if (Result<void> parsed = parse(*m_source); !parsed) {
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
    m_source.reset();
    m_isMp3Content = false;
    m_file.reset();
    m_info = {};
    m_v2.reset();
    m_v1.reset();
    m_v1Fields = {};
    m_edits.clear();
    m_composed.reset();
}

Result<void> TagObject::parse(platform::ByteSource &content)
{
    auto v1 = id3::readV1Block(content, content.size());
    if (!v1)
        return tl::unexpected(v1.error());
    Start withoutV1(content, content.size() - (*v1 ? id3::V1Size : 0));
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

/// Where the audio ends.
qint64 TagObject::withoutV1(const platform::ByteSource &content) const
{
    return content.size() - (m_v1 ? id3::V1Size : 0);
}

TagObject::NewContent TagObject::composeV1(platform::ByteSource &content, Others others) const
{
    id3::V1Fields fields = m_v1Fields;
    const auto isWritten = [&](FrameKind kind) { return others == Others::Written || edit(kind) != nullptr; };
    for (const auto &[kind, field] : V1Texts) {
        if (isWritten(kind))
            fields.*field = text(kind);
    }
    if (isWritten(FrameKind::TrackNumber))
        fields.track = Track() <= 255 ? Track() : 0;
    if (isWritten(FrameKind::ContentType))
        fields.genre = Genre();
    const QByteArray block = id3::buildV1(fields, m_v1.value_or(QByteArray()));
    if (m_v1 && block == *m_v1)
        return std::nullopt;
    return std::vector<Segment>{Segment::kept(0, withoutV1(content)), Segment::fresh(block)};
}

/// Removes all of them: careless programs leave several, and stripping one would uncover the next.
TagObject::NewContent TagObject::composeWithoutV1(platform::ByteSource &content) const
{
    qint64 end = content.size();
    for (std::optional<QByteArray> block = m_v1; block;) {
        end -= id3::V1Size;
        Result<std::optional<QByteArray>> before = id3::readV1Block(content, end);
        if (!before)
            return tl::unexpected(before.error());
        block = std::move(*before);
    }
    if (end == content.size())
        return std::nullopt;
    return std::vector<Segment>{Segment::kept(0, end)};
}

TagObject::NewContent TagObject::composeV2(platform::ByteSource &content, Others others, int newVersion) const
{
    id3::FieldEdits edits = m_edits;
    // What only ID3v1 has goes into ID3v2 too. A put of the same value changes nothing.
    for (const FrameKind kind : {FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album, FrameKind::Year,
             FrameKind::Comment, FrameKind::TrackNumber, FrameKind::ContentType}) {
        if (others == Others::Kept || edits.contains(kind) || valueFrame(m_v2, kind))
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
    return id3::composeSave(content, m_v2, edits, newVersion);
}

TagObject::NewContent TagObject::composed(Step step, Others others, int newVersion, platform::ByteSource &content) const
{
    switch (step) {
    case Step::SaveV1:
        return composeV1(content, others);
    case Step::SaveV2:
        return composeV2(content, others, newVersion);
    case Step::StripV1:
        return composeWithoutV1(content);
    case Step::StripV2:
        return id3::composeStrip(content, withoutV1(content));
    }
    Q_UNREACHABLE();
    return std::nullopt;
}

/// What looks damaged may be what another program is writing.
Error TagObject::causeOf(const Error &error) const
{
    const auto now = m_file->info();
    const bool isOther = now && (now->size != m_info.size || now->modified != m_info.modified);
    return isOther ? Error{ErrorCode::ChangedMeanwhile, {}, error.detail} : error;
}

Result<void> TagObject::compose(Step step, Others others, int newVersion)
{
    if (const Result<void> allowed = m_composed ? Result<void>() : checkWritable(); !allowed)
        return allowed;
    Source content(*m_source, m_composed);
    NewContent changed = composed(step, others, newVersion, content.get());
    if (!changed)
        return tl::unexpected(withPath(causeOf(changed.error()), m_path));
    if (*changed)
        m_composed = m_composed ? id3::combined(*m_composed, **changed) : std::move(**changed);
    return {};
}

Result<void> TagObject::readComposed()
{
    m_edits.clear();
    if (!m_composed)
        return {};
    Source content(*m_source, m_composed);
    Result<void> parsed = parse(content.get());
    if (!parsed)
        return tl::unexpected(withPath(parsed.error(), m_path));
    return parsed;
}

Result<WriteOutcome> TagObject::composeAndWrite(Step step, const WriteOptions &options, int newVersion)
{
    if (const Result<void> done = compose(step, Others::Written, newVersion); !done)
        return tl::unexpected(done.error());
    return write(options);
}

Result<WriteOutcome> TagObject::SaveV1Tag(const WriteOptions &options)
{
    return composeAndWrite(Step::SaveV1, options);
}

Result<WriteOutcome> TagObject::StripV1Tag(const WriteOptions &options)
{
    return composeAndWrite(Step::StripV1, options);
}

Result<WriteOutcome> TagObject::SaveV2Tag(const WriteOptions &options, int newVersion)
{
    return composeAndWrite(Step::SaveV2, options, newVersion);
}

Result<WriteOutcome> TagObject::StripV2Tag(const WriteOptions &options)
{
    return composeAndWrite(Step::StripV2, options);
}

Result<void> TagObject::checkWritable()
{
    if (!m_file || !m_held)
        return tl::unexpected(
            m_held ? Error{ErrorCode::InvalidArgument, {}, QStringLiteral("no file is linked")} : m_held.error());
    Result<void> allowed = checkMp3Name(m_held->place().path());
    if (allowed && m_unsettled)
        allowed = tl::unexpected(*m_unsettled);
    if (allowed && isV2Cut()) // fields may be missing; the user has not seen what would be lost
        allowed = tl::unexpected(Error{ErrorCode::TagTooLarge, {}, {}});
    if (allowed && m_content == Content::Checked && !m_isMp3Content) {
        allowed = checkMp3Content(*m_source);
        m_isMp3Content = allowed.has_value();
    }
    return allowed ? allowed : tl::unexpected(withPath(allowed.error(), m_held->place().path()));
}

Result<WriteOutcome> TagObject::write(const WriteOptions &options)
{
    if (!m_composed)
        return WriteOutcome::Unchanged;
    const std::vector<Segment> content = std::move(*std::exchange(m_composed, std::nullopt));
    m_source.reset();
    m_file.reset(); // some file systems of Windows don't replace an open file
    Result<WriteOutcome> outcome = storage::rewriteFile(m_fileSystem, *m_held, m_info, content, options);
    if (outcome && *outcome != WriteOutcome::Unchanged) {
        forget(); // what was parsed is no longer what the file holds
        return outcome;
    }
    m_isMp3Content = false;
    if (auto reopened = open()) {
        m_file = std::move(*reopened);
        m_source.emplace(*m_file, m_info.size);
    } else {
        Close();
    }
    return outcome;
}

} // namespace ravlin
