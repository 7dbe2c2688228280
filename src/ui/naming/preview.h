// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/naming/newname.h"
#include "ui/controls/pagecontext.h"
#include "ui/naming/previewmodel.h"

#include <QDialog>
#include <QStringList>

class QPushButton;
class QTreeView;

namespace ravlin {

class PlainLabel;

/// What is to be previewed.
struct PreviewRequest
{
    QStringList paths; ///< the files, in list order
    QString pattern;   ///< for the extraction
    NamingRule rule;   ///< for the renaming
};

/// The window that shows what the extraction or the renaming would do to the selected files, before anything is
/// written. The program's preview mode chooses between the two.
///
/// It is modal, so that what it shows stays true, and deletes itself when it is closed.
class preview : public QDialog
{
    Q_OBJECT

public:
    /// Computes the rows, with progress, and shows the window. Does nothing while other work is under way.
    static void open(const PageContext &context, const PreviewRequest &request, QWidget *parent);

    explicit preview(const PageContext &context, QWidget *parent = nullptr);

    /// Fills the list. Returns false, with the list unchanged, while other work is under way.
    bool load(const PreviewRequest &request);

protected:
    void changeEvent(QEvent *event) override;

private:
    void createControls();
    void applyCaptions();
    void applyIcons();
    void fitColumns();
    void showRemark();
    std::vector<PreviewLine> linesFor(const PreviewRequest &request, const ProgressReport &progress) const;

    PageContext m_context;
    PreviewModel *m_model;
    QTreeView *m_list;
    PlainLabel *m_remark;
    PlainLabel *m_summary;
    QPushButton *m_close;
};

} // namespace ravlin
