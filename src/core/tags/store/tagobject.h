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
/// ID3v1's. Puts and removals are collected until SaveV1Tag or SaveV2Tag writes all properties into one tag kind.
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
    /// Parses the linked file anew, after a save too. ChangedMeanwhile if another file has taken its place.
    Result<void> LinkAgain();
    void Close();

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

    /// Whether the ID3v2 tag has a picture.
    bool hasPicture() const;
    /// The parsed ID3v2 frames in the tag's order. Empty without ID3v2.
    const std::vector<id3::Frame> &frames() const;

    /// Whether the linked file may be written. Errors: NotMp3Name, TagTooLarge, NotMp3Content, and those of
    /// FileSystem::follow and of reading.
    Result<void> checkWritable();

    /// Writes the properties into one tag kind, or removes one: all ID3v2 tags that follow each other at the start of
    /// the file, all ID3v1 tags at its end. Errors: those of checkWritable, BrokenTag, TooLarge, and those of
    /// storage::rewriteFile; the file is then unchanged.
    Result<storage::WriteOutcome> SaveV1Tag(const storage::WriteOptions &options = {});
    Result<storage::WriteOutcome> StripV1Tag(const storage::WriteOptions &options = {});
    /// newVersion: 3 or 4, for an ID3v2.3 or 2.4 tag in a file without ID3v2. An existing tag keeps its version.
    Result<storage::WriteOutcome> SaveV2Tag(const storage::WriteOptions &options = {}, int newVersion = 3);
    Result<storage::WriteOutcome> StripV2Tag(const storage::WriteOptions &options = {});

private:
    void put(FrameKind kind, const id3::FieldEdit &edit) { m_edits[kind] = edit; }
    const id3::FieldEdit *edit(FrameKind kind) const;
    QString text(FrameKind kind) const;
    Result<std::unique_ptr<platform::File>> open();
    Result<void> read();
    Result<void> parse();
    void forget();
    Result<storage::WriteOutcome> write(
        const Result<std::optional<std::vector<storage::Segment>>> &content, const storage::WriteOptions &options);

    platform::FileSystem &m_fileSystem;
    const Content m_content;
    QString m_path;
    Result<storage::HeldFile> m_held = tl::unexpected(Error());
    std::unique_ptr<platform::File> m_file;
    platform::FileInfo m_info;
    std::optional<id3::Tag> m_v2;
    std::optional<QByteArray> m_v1;
    id3::V1Fields m_v1Fields;
    QString m_linkedYear; ///< before the first save
    id3::FieldEdits m_edits;
};

} // namespace ravlin
