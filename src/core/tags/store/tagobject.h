// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/safewrite.h"
#include "core/tags/id3/id3v1.h"
#include "core/tags/id3/id3v2.h"
#include "core/tags/id3/id3v2writer.h"

#include <QString>

#include <optional>
#include <vector>

namespace ravlin {

/// The tags of one MP3 file, ID3v1 and ID3v2 seen as one: a property has ID3v2's value if that tag has the frame, else
/// ID3v1's. Puts and removals are collected until a step writes the properties into one tag kind.
/// Whatever no put or removal touches stays as it is, byte for byte.
///
/// Writes only into files that the rule of writerule.h allows; a link is followed to the file itself, whose name
/// counts.
///
/// For one operation: Link, read or put, save or strip, Close. A save that wrote closes the object, because the file is
/// no longer what was parsed. One thread at a time.
class TagObject
{
public:
    enum class Content
    {
        Checked,
        Any ///< the user insists: the content is not looked at
    };

    explicit TagObject(platform::FileSystem &fileSystem, Content content = Content::Checked)
        : m_fileSystem(fileSystem), m_content(content)
    {
    }

    /// Attaches to a file and parses its tags. Errors: NotFound, NotAFile, AccessDenied, Io.
    Result<void> Link(const QString &path);
    void Close();

    /// The file's state when its tags were parsed.
    const platform::FileInfo &info() const { return m_info; }

    bool HasV1Tag() const { return m_v1.has_value(); }
    bool HasV2Tag() const { return m_v2.has_value(); }
    /// Whether the ID3v2 tag is too large to be read in full. Then nothing is saved, removals included.
    bool isV2Cut() const { return m_v2 && m_v2->isCut(); }

    QString Artist() const { return text(FrameKind::LeadArtist); }
    QString Album() const { return text(FrameKind::Album); }
    QString Title() const { return text(FrameKind::Title); }
    /// The comment without description, else the first one; never one that a program keeps for itself.
    QString Comment() const { return text(FrameKind::Comment); }
    /// 0 to 254 as the tag has it; 255 for none or a free text.
    int Genre() const;
    QString Year() const { return text(FrameKind::Year); }
    /// 0 for none.
    int Track() const;

    /// An empty text is a removal.
    void setArtist(const QString &text) { put(FrameKind::LeadArtist, {text.isEmpty(), text, 0}); }
    void setAlbum(const QString &text) { put(FrameKind::Album, {text.isEmpty(), text, 0}); }
    void setTitle(const QString &text) { put(FrameKind::Title, {text.isEmpty(), text, 0}); }
    void setComment(const QString &text) { put(FrameKind::Comment, {text.isEmpty(), text, 0}); }
    void setGenre(int number) { put(FrameKind::ContentType, {false, {}, number}); }
    void setYear(const QString &text) { put(FrameKind::Year, {text.isEmpty(), text, 0}); }
    void setTrack(int number) { put(FrameKind::TrackNumber, {false, {}, number}); }
    /// Removes every frame of that kind, and the field of ID3v1.
    void removeFrames(FrameKind kind) { put(kind, {true, {}, 0}); }
    /// Removes the comment that Comment() shows; those with another description stay.
    void removeShownComment() { put(FrameKind::Comment, {.remove = true, .text = {}, .isShownOnly = true}); }

    /// Whether the ID3v2 tag has a picture.
    bool hasPicture() const;
    /// The parsed ID3v2 frames in the tag's order. Empty without ID3v2.
    const std::vector<id3::Frame> &frames() const;
    /// The fields of ID3v1 as they were parsed.
    std::optional<id3::V1Fields> v1Fields() const { return m_v1 ? std::optional(m_v1Fields) : std::nullopt; }

    /// Whether the linked file may be written. Errors: NotMp3Name, TagTooLarge, NotMp3Content, and those of
    /// FileSystem::follow and of reading.
    Result<void> checkWritable();

    enum class Step
    {
        SaveV1,
        SaveV2,
        StripV1, ///< all of them, at the end of the file
        StripV2, ///< all that follow each other at its start
    };

    /// What a save writes of the properties that nothing was put into.
    enum class Others
    {
        Written, ///< what they show, be it from the other kind
        Kept     ///< they stay as the kind has them
    };

    /// Writes the properties into one tag kind, or removes one, in the content that write() will give the file. Further
    /// steps may follow. newVersion: 3 or 4, for an ID3v2.3 or 2.4 tag in a file without ID3v2; an existing tag keeps
    /// its version. Errors: those of checkWritable, BrokenTag, TooLarge; the content stays as it was.
    Result<void> compose(Step step, Others others = Others::Written, int newVersion = 3);
    /// From now on the properties are those of the composed content; puts and removals are forgotten.
    Result<void> readComposed();
    /// Gives the file the composed content in one step. Errors: those of storage::rewriteFile; the file is then
    /// unchanged.
    Result<storage::WriteOutcome> write(const storage::WriteOptions &options);

    /// One step, written at once.
    Result<storage::WriteOutcome> SaveV1Tag(const storage::WriteOptions &options = {});
    Result<storage::WriteOutcome> StripV1Tag(const storage::WriteOptions &options = {});
    Result<storage::WriteOutcome> SaveV2Tag(const storage::WriteOptions &options = {}, int newVersion = 3);
    Result<storage::WriteOutcome> StripV2Tag(const storage::WriteOptions &options = {});

private:
    using NewContent = Result<std::optional<std::vector<storage::Segment>>>;

    void put(FrameKind kind, const id3::FieldEdit &edit) { m_edits[kind] = edit; }
    const id3::FieldEdit *edit(FrameKind kind) const;
    QString text(FrameKind kind) const;
    Result<std::unique_ptr<platform::File>> open();
    Result<void> read();
    Result<void> parse(platform::ByteSource &content);
    void forget();
    NewContent composeV1(platform::ByteSource &content, Others others) const;
    NewContent composeV2(platform::ByteSource &content, Others others, int newVersion) const;
    NewContent composeWithoutV1(platform::ByteSource &content) const;
    NewContent composed(Step step, Others others, int newVersion, platform::ByteSource &content) const;
    Error causeOf(const Error &error) const;
    qint64 withoutV1(const platform::ByteSource &content) const;
    Result<storage::WriteOutcome> composeAndWrite(Step step, const storage::WriteOptions &options, int newVersion = 3);

    platform::FileSystem &m_fileSystem;
    const Content m_content;
    QString m_path;
    Result<storage::HeldFile> m_held = tl::unexpected(Error());
    std::unique_ptr<platform::File> m_file;
    std::optional<platform::FileSourceWithStart> m_source; ///< of m_file, as it was when it was parsed
    bool m_isMp3Content = false;                           ///< known once it was looked at
    platform::FileInfo m_info;
    std::optional<Error> m_unsettled; ///< why nothing may be written
    std::optional<id3::Tag> m_v2;
    std::optional<QByteArray> m_v1;
    id3::V1Fields m_v1Fields;
    QString m_linkedYear; ///< before the first save
    id3::FieldEdits m_edits;
    std::optional<std::vector<storage::Segment>> m_composed; ///< nothing: the file as it is
};

} // namespace ravlin
