// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>
#include <QUrl>

#include <optional>

namespace ravlin {

class Settings;

/// What applies where the settings hold nothing, and where the program is at home.
namespace defaults {

inline constexpr QStringView Server = u"gnudb.gnudb.org"; ///< public server that speaks the CD database's protocol
extern const QStringView Mail;                            ///< the maker's address, RAVLIN_CONTACT of the build
extern const QStringView WebSite;                         ///< RAVLIN_HOMEPAGE of the build
inline constexpr int TagSaveModeShown = 3; ///< the mode that the options dialog shows before one was ever chosen

} // namespace defaults

/// The text, or the default where it is empty.
QString textOrDefault(const QString &text, QStringView fallback);
/// The CD database's server and the e-mail address sent to it, as stored or else the defaults.
QString cdServer(const Settings &settings);
QString cdMail(const Settings &settings);

/// The tag-save mode, a number from 1 to 5.
inline constexpr int FirstTagSaveMode = 1;
inline constexpr int LastTagSaveMode = 5;
inline constexpr int DefaultTagSaveMode = 2;

/// The mode that a stored text stands for: exactly one of "1" to "5", nothing else.
std::optional<int> tagSaveModeFromText(QStringView text);

/// What a double click on a file does.
enum class DoubleClick
{
    Open, ///< opens it in the system's player
    Edit  ///< shows its tag on the page for one file
};

/// The options on the second page of the options dialog.
struct FurtherOptions
{
    static constexpr int DefaultTagVersion = 3;
    static constexpr int DefaultHistoryDays = 90;
    static constexpr int DefaultHistoryMegabytes = 500;
    static constexpr int MostHistoryDays = 3650;
    static constexpr int MostHistoryMegabytes = 1'000'000;

    int newTagVersion = DefaultTagVersion; ///< 3 or 4: a file without an ID3v2 tag gets one of ID3v2.3 or 2.4
    bool keepFileTimes = false;            ///< writing a tag keeps the file's modification time
    DoubleClick doubleClick = DoubleClick::Open;
    QString hiddenColumns;                ///< names of the file list's hidden columns, separated by blanks
    bool onlyEditedFields = false;        ///< a save leaves fields alone that the user did not edit
    bool keepSelection = false;           ///< the same files stay selected after the list was filled again
    bool keepSubfolders = false;          ///< a list with subfolders keeps them when it is filled again
    bool skipTrashFolders = false;        ///< a list with subfolders leaves out the trash at the top of a drive
    int historyDays = DefaultHistoryDays; ///< how long changes can be taken back
    int historyMegabytes = DefaultHistoryMegabytes; ///< what their record may take, in units of 1024 * 1024 bytes

    /// A stored text without a known meaning gives the default.
    static FurtherOptions restored(const Settings &settings);
    /// Whether the settings say anything about a protection.
    static bool hasProtections(const Settings &settings);
    /// Reaches the file with Settings::save(). Does not write an option that means the same as the stored text: a value
    /// that only a later version knows stays until the user chooses another.
    void store(Settings &settings) const;

    bool operator==(const FurtherOptions &) const = default;
};

/// Which computation the preview window shows.
enum class PreviewMode
{
    None,
    Extrae,
    Rename
};

/// What every part of the program shares during one run. Made once and passed by reference; used by the interface
/// thread alone.
struct ProgramState
{
    QString currentFolder;         ///< the listed folder, ends in the path separator
    QString currentFolderAsChosen; ///< the same path as it was chosen, without a separator added
    qint64 freeMegabytes = 0;      ///< free space on the current folder's drive, in whole units of 1024 * 1024 bytes
    int tagSaveMode = DefaultTagSaveMode;
    bool cancelled = false;        ///< a save was refused for want of space; batches take no further file
    bool writesAnyContent = false; ///< tags go into files named ".mp3" whatever their content is
    PreviewMode previewMode = PreviewMode::None;
    FurtherOptions options; ///< how tags are written, what the file list shows and does
};

/// The folder that a command line names, as text. Removes quotes around it, takes the path out of the address of a file
/// on this computer ("file:///..."), makes the path absolute if there is a working folder, and cuts a name that ends in
/// ".mp3" back to the folder that holds the file, including the separator. A name without a separator beyond its first
/// character is cut to that character. Any other text is a folder's path as it stands. Does not look at the disk.
QString folderOfCommandLine(const QString &commandLine, const QString &workingFolder = {});

/// What an address given to the window stands for. Both are empty for one that is not of a file.
struct DroppedAddress
{
    QString path;          ///< on this computer or on a drive that the user has connected to it
    QString otherComputer; ///< which is not asked for anything: even a look at its files would tell it who the user is
};

/// Does not look at the disk.
DroppedAddress droppedAddress(const QUrl &url);

} // namespace ravlin
