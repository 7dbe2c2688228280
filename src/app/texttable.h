#pragma once

#include "app/captiontable.h"

namespace ravlin {

/// Interface texts beyond the 91 captions. One may be added here together with its row in texttable.cpp; the build
/// fails when a row is missing, out of order or empty in a language.
///
/// The command line's own messages are not among them: it is a tool for scripts and speaks plain English.
enum class Text
{
    ErrorNotFound,
    ErrorAlreadyExists,
    ErrorNotAFile,
    ErrorAccessDenied,
    ErrorReadOnly,
    ErrorNoSpace,
    ErrorIo,
    ErrorChangedMeanwhile,
    ErrorVerifyFailed,
    ErrorBrokenTag,
    ErrorTooLarge,
    ErrorGenreOutOfRange,
    ErrorNoStream,
    ErrorSettings,
    ErrorInvalidArgument,
    ErrorUnsupported,
    HintManyFiles,
    HintNoFile,
    HintNothingChosen,
    HintRenameFiles,
    TipSaveOneFile,
    TipSaveManyFiles,
    TipPreviousFile,
    TipNextFile,
    TipRemoveTag,
    TipConvertOnSave,
    TipYear,
    TipTrack,
    TipApplyField,
    TipAutoTrack,
    TipFirstTrack,
    TipConvertEach,
    TipApplyToAll,
    TipMask,
    TipPlaceholder,
    TipExtract,
    TipPreview,
    TipNamingRule,
    TipAdvancedPattern,
    TipConvertNames,
    TipRename,
    RemarkLongName,
    RemarkNoMatch,
    RemarkKeepsName,
    RemarkAdjusted,
    NameEmpty,
    NameDots,
    NameReserved,
    NameTooLong,
    NameLeadsOutside,
    PreviewMarked,
    RemarkNumbered,
    RemarkMakesFolder,
    HintRenamed,
    ClashTitle,
    ClashQuestion,
    ClashSkip,
    ClashKeepBoth,
    ClashStop,
    ClashForAll,
    NameToolbar,
    NameFolders,
    NameSplitter,
    NamePages,
    NameFormerTabs,
    NameFurtherTabs,
    NameStatusBar,
    TitleWaiting,
};

inline constexpr int TextCount = static_cast<int>(Text::TitleWaiting) + 1;

/// The text in all languages. Read it through Captions.
const LanguageTexts &languageTexts(Text text);

} // namespace ravlin
