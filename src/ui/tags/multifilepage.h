// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/conversion.h"
#include "ui/controls/pagearea.h"

#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace ravlin {

class Captions;
class ConversionBox;
class DigitsEdit;
class PageOwner;
class TagStore;
struct MultiEditPage;
struct ProgramState;
struct SessionChoices;
struct TagRecord;

/// What the page works with. All of it outlives the page.
struct MultiFilePageContext
{
    PageOwner &owner;
    ProgramState &state;
    TagStore &tagStore;
    const Captions &captions;
};

/// The page that writes chosen fields into the tags of all selected files, numbers their tracks and converts their
/// texts. What is not chosen stays in each file as it is.
///
/// The window that holds it calls selectionChanged() whenever rows were selected or unselected, and applyCaptions() at
/// a change of the language.
class MultiFilePage : public PageArea
{
    Q_OBJECT

public:
    explicit MultiFilePage(const MultiFilePageContext &context, QWidget *parent = nullptr);

    /// The conversions as the settings remember them.
    void showChoices(const SessionChoices &choices);
    void storeChoices(SessionChoices &choices) const;

    /// Says how many files a run would write.
    void selectionChanged();
    void applyCaptions();

Q_SIGNALS:
    /// A run has ended and the list was filled again: the current row is to be shown again.
    void finished();

protected:
    void applyIcons() override;

private:
    /// A check box, the box that it opens, and the caption of both.
    struct Field
    {
        Caption caption;
        QCheckBox *check;
        QWidget *box;
    };

    void createControls();
    QWidget *createContent();
    void setTabOrder();
    void connectControls();
    void updateEnabling();
    void applyToolTips();
    MultiEditPage page() const;
    void showConverted(const TagRecord &boxes);
    void run();

    MultiFilePageContext m_context;

    QLineEdit *Tmartista = nullptr;
    QLineEdit *tmalbum = nullptr;
    DigitsEdit *tma_o = nullptr;
    QComboBox *cmestilo = nullptr;
    QLineEdit *tmcomentarios = nullptr;
    DigitsEdit *tmpista = nullptr;
    QCheckBox *chmartista = nullptr;
    QCheckBox *chmalbum = nullptr;
    QCheckBox *chma_o = nullptr;
    QCheckBox *chmestilo = nullptr;
    QCheckBox *chmcomentarios = nullptr;
    QCheckBox *chmpista = nullptr;
    ConversionBox *m_caseConversion = nullptr;    ///< op4_1, ccase_1
    ConversionBox *m_replaceConversion = nullptr; ///< op4_4, ccase_4
    QLabel *m_hint = nullptr;
    QPushButton *multiple = nullptr;
    std::array<Field, 6> m_fields{}; ///< in tab order
};

} // namespace ravlin
