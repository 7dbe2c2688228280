// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"
#include "core/platform/filesystem.h"
#include "core/tags/mpeg/streamdetails.h"
#include "core/tags/record/tagrecord.h"
#include "ui/controls/pagearea.h"

#include <array>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace ravlin {

class BatchOutcome;
class Captions;
class ConversionBox;
class DigitsEdit;
class ElidedLabel;
class PageOwner;
struct ProgramState;
class StreamPanel;
class TagStore;

/// What the page works with. All of it outlives the page.
struct SingleFilePageContext
{
    PageOwner &owner;
    ProgramState &state;
    TagStore &tagStore;
    const Captions &captions;
    platform::FileSystem &fileSystem = platform::FileSystem::native(); ///< for the stream details
};

/// The page that edits the tag of one file: shows the tag of the list's current row, writes it into every selected
/// file, steps through the list and removes tags.
///
/// The window that holds it calls ShowCurrent() when the list's current row changes, reset() after every listing,
/// selectionChanged() whenever rows were selected or unselected, and applyCaptions() at a change of the language.
class SingleFilePage : public PageArea
{
    Q_OBJECT

public:
    explicit SingleFilePage(const SingleFilePageContext &context, QWidget *parent = nullptr);

    /// Fills the page from the file of the current row; without a current row as reset().
    void ShowCurrent();
    /// Empties the page: no file is shown, nothing can be saved.
    void reset();
    /// Puts the cursor into the title, all of it selected.
    void startEditing();
    /// Says how many files a save would write.
    void selectionChanged();
    void applyCaptions();

    /// The tag of the file that is shown, as it was read; all empty when there is none.
    const TagRecord &shownRecord() const { return m_record; }
    bool isShowingFile() const { return m_isShowingFile; }

protected:
    void applyIcons() override;

private:
    void createControls();
    QWidget *createContent();
    void connectControls();
    void setTabOrder();

    void save();
    void step(qsizetype rows);
    void removeTag(Caption caption, Result<void> (TagStore::*remove)(const QString &));
    void listAgain();

    TagRecord page() const;
    void showPage(const TagRecord &record);
    void setSavingEnabled(bool enabled);

    SingleFilePageContext m_context;
    TagRecord m_record;
    bool m_isShowingFile = false;
    StreamDetailsReader m_streamReader;

    QLineEdit *Ttitulo = nullptr;
    QLineEdit *tartista = nullptr;
    QLineEdit *talbum = nullptr;
    DigitsEdit *ta_o = nullptr;
    DigitsEdit *Tpista = nullptr;
    QLineEdit *tcomentarios = nullptr;
    QComboBox *cestilo = nullptr;
    QPushButton *edita = nullptr;
    QPushButton *nfile = nullptr;
    QPushButton *pfile = nullptr;
    QPushButton *eliminav1 = nullptr;
    QPushButton *eliminav2 = nullptr;
    ConversionBox *m_conversion = nullptr; ///< op4_2, ccase_2
    ElidedLabel *m_fileName = nullptr;
    QLabel *m_hint = nullptr;
    StreamPanel *m_streamPanel = nullptr;

    struct FieldLabel
    {
        Caption caption;
        QLabel *label;
        QWidget *field;
    };
    std::array<FieldLabel, 7> m_fields{}; ///< in tab order
};

} // namespace ravlin
