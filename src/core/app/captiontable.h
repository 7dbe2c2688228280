// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringView>

#include <array>

namespace ravlin {

/// One interface text in the three languages.
struct LanguageTexts
{
    QStringView english;
    QStringView spanish;
    QStringView french;
};

/// The captions, by their numbers in the table. Equal texts for different windows bear the window's name.
enum class Caption
{
    PreviousFile = 1,
    NextFile = 2,
    ConvertCase = 3,
    ConvertReplace = 4,
    CaseUpper = 5,
    CaseLower = 6,
    CaseCapitalize = 7,
    ReplaceSpaces = 8,
    ReplaceUnderscores = 9,
    Files = 10,
    Genre = 11,
    Year = 12,
    Track = 13,
    Comment = 14,
    Album = 15,
    Artist = 16,
    AutoTrack = 17,
    SaveTags = 18,
    AdvancedVariables = 19,
    Rename = 20,
    Advanced = 21,
    SkippedField = 22,
    Variables = 23,
    FileNameMask = 24,
    LookUpDisc = 25,
    WritePlaylist = 26,
    PlayFiles = 27,
    RenameFolder = 28,
    DeleteFiles = 29,
    SelectAll = 30,
    Options = 31,
    Info = 32,
    OnlySelectedFiles = 33,
    DeletePlaylists = 34,
    DeleteFolder = 35,
    SelectNone = 36,
    MoveFiles = 37,
    CopyFiles = 38,
    SingleFileTab = 39, ///< Tab and Tip: of a working mode
    MultiFileTab = 40,
    ExtractTab = 41,
    SingleFileTip = 42,
    MultiFileTip = 43,
    ExtractTip = 44,
    RenameFiles = 45, ///< tab and tip
    Empty = 46,       ///< in every language
    Mode = 47,
    Time = 48,
    Frequency = 49,
    Size = 50,
    RemoveV1 = 51,
    RemoveV2 = 52,
    Preview = 53,
    Title = 54,
    File = 55,
    MoveFolder = 56,
    CopyFolder = 57,
    Search = 58,
    Ok = 59,
    Cancel = 60,
    SearchAgain = 61,
    ProgramUpdate = 62,
    Download = 63,
    UnusedStatus = 64,
    FileList = 65,
    UpdateStatus = 66,
    FileSize = 67,
    FileName = 68,
    Destination = 69,
    EstimatedTime = 70,
    NewVersion = 71,
    SelectFolder = 72,
    DownloadFinished = 73,
    DiscNotFound = 74,
    Server = 75,
    Language = 76,
    CheckForNewVersion = 77,
    RememberLastFolder = 78,
    SaveV2Only = 79,
    SaveV1Only = 80,
    SaveBoth = 81,
    SaveV2RemoveV1 = 82,
    SaveV1RemoveV2 = 83,
    Save = 84,
    OnlySelected = 85,
    LowDiskSpace = 86,
    DownloadingFile = 87,
    Percent = 88,
    Description = 89,
    Version = 90,
    LastVersion = 91,
};

inline constexpr int CaptionCount = static_cast<int>(Caption::LastVersion);

/// The headings of the file list's columns of text, in the columns' order.
inline constexpr std::array ColumnCaptions{
    Caption::File, Caption::Track, Caption::Title, Caption::Artist, Caption::Album, Caption::Year};

/// Each caption at the index of its number less one. Read them through Captions.
extern const std::array<LanguageTexts, CaptionCount> CaptionTable;

} // namespace ravlin
