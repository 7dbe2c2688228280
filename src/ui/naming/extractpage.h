// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/store/saveoutlook.h"
#include "ui/controls/pagearea.h"
#include "ui/controls/pagecontext.h"

class QPushButton;

namespace ravlin {

class OutlookHint;
class PatternBox;
class PlaceholderBox;
class PlainLabel;

/// The page that fills tags from file names: the pattern, the labels of its placeholders, the run and its preview.
///
/// Its window calls selectionChanged() when the selection changes, and applyCaptions() when the language does.
class ExtractPage : public PageArea
{
    Q_OBJECT

public:
    explicit ExtractPage(const PageContext &context, QWidget *parent = nullptr);

    /// Shows how many files a run would write.
    void selectionChanged();
    void applyCaptions();
    QAbstractButton *saveButton() const override;

Q_SIGNALS:
    /// A run has ended and the list was filled again. The current row has to be shown again.
    void finished();

protected:
    void applyIcons() override;

private:
    QWidget *createContent();
    void connectControls();
    void showHint();
    OutlookReader::Prepare preparing() const;
    void run();
    void showPreview();

    PageContext m_context;
    PlainLabel *m_patternLabel;
    PatternBox *m_pattern;
    PlaceholderBox *m_placeholders; ///< lt_9 to lt_15, lt_17
    PlainLabel *m_hint;
    OutlookHint *m_outlook = nullptr;
    QPushButton *m_preview;
    QPushButton *m_extract;
};

} // namespace ravlin
