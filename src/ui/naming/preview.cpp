// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/preview.h"

#include "core/app/idiomas.h"
#include "core/app/pageowner.h"
#include "core/tags/store/tagstore.h"
#include "ui/controls/evenrows.h"
#include "ui/controls/icons.h"
#include "ui/controls/plain/plainlabel.h"

#include <QEvent>
#include <QHeaderView>
#include <QPushButton>
#include <QScreen>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace ravlin {

namespace {

constexpr QSize StartSize(1100, 520);

} // namespace

void preview::open(const PageContext &context, const PreviewRequest &request, QWidget *parent)
{
    auto *window = new preview(context, parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    if (!window->load(request)) {
        delete window;
        return;
    }
    window->show();
}

preview::preview(const PageContext &context, QWidget *parent)
    : QDialog(parent), m_context(context), m_model(new PreviewModel(this)), m_list(new QTreeView(this)),
      m_remark(new PlainLabel(this)), m_summary(new PlainLabel(this)), m_close(new QPushButton(this))
{
    setObjectName(QStringLiteral("preview"));
    setWindowTitle(QStringLiteral("preview"));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    createControls();
    applyCaptions();
    applyIcons();
    resize(StartSize.boundedTo(screen()->availableSize() * 9 / 10));
}

void preview::createControls()
{
    m_list->setObjectName(QStringLiteral("ListView1"));
    m_list->setModel(m_model);
    m_list->setItemDelegate(new EvenRows(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setUniformRowHeights(true);
    m_list->setAlternatingRowColors(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::NoSelection); // a selected row would lose its mark's colour
    m_list->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setHighlightSections(false);
    m_list->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_remark->setObjectName(QStringLiteral("remark"));
    m_remark->setWordWrap(true);
    m_summary->setObjectName(QStringLiteral("summary"));
    m_close->setObjectName(QStringLiteral("close"));
    m_close->setDefault(true);

    auto *foot = new QHBoxLayout;
    foot->addWidget(m_remark, 1);
    foot->addWidget(m_summary);
    foot->addWidget(m_close);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_list);
    rows->addLayout(foot);
    connect(m_close, &QPushButton::clicked, this, &preview::close);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this, &preview::showRemark);
    m_list->setFocus();
}

void preview::applyCaptions()
{
    const Captions &captions = m_context.captions;
    QStringList texts;
    for (const Caption caption : ColumnCaptions)
        texts << captions.text(caption);
    m_model->setHeaderTexts(
        texts << QStringLiteral("id3v1") << QStringLiteral("id3v2") << captions.text(Text::ColumnRemarks));
    m_list->setAccessibleName(windowTitle());
    m_close->setText(captions.text(Caption::Ok));
}

void preview::applyIcons()
{
    std::array<QIcon, PreviewMarkCount> icons;
    const auto choose = [&](PreviewMark mark, const QString &name) {
        icons[static_cast<std::size_t>(mark)] = themedIcon(name, palette());
    };
    choose(PreviewMark::Untouched, QStringLiteral("equal"));
    choose(PreviewMark::MakesFolder, QStringLiteral("folder-input"));
    choose(PreviewMark::Adjusted, QStringLiteral("file-pen"));
    choose(PreviewMark::Trouble, QStringLiteral("triangle-alert"));
    m_model->setMarkIcons(icons);
}

void preview::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_model != nullptr)
        applyIcons();
}

std::vector<PreviewLine> preview::linesFor(const PreviewRequest &request, const ProgressReport &progress) const
{
    const PageContext &context = m_context;
    switch (context.state.previewMode) {
    case PreviewMode::Extrae:
        return extractionLines(
            previewExtraction(request.paths, request.pattern, context.tagStore, progress), context.captions);
    case PreviewMode::Rename:
        return renamingLines(
            planFileRenaming(request.paths, request.rule, context.tagStore, context.fileSystem, progress),
            context.captions);
    case PreviewMode::None:
        break;
    }
    return {};
}

bool preview::load(const PreviewRequest &request)
{
    std::vector<PreviewLine> lines;
    const bool ran = m_context.owner.runWithProgress(
        request.paths.size(), [&](const ProgressReport &progress) { lines = linesFor(request, progress); });
    if (!ran)
        return false;
    m_model->setLines(std::move(lines));
    fitColumns();
    const int marked = m_model->markedCount();
    m_summary->setText(
        marked == 0 ? QString() : m_context.captions.text(Text::PreviewMarked).arg(marked).arg(m_model->rowCount()));
    m_list->setCurrentIndex(m_model->index(0, 0));
    showRemark();
    return true;
}

/// Makes the columns as wide as their texts. If that is too much for the window, the remarks give way first, down to a
/// third of it since the foot shows them in full; then the columns of names share what the others leave.
void preview::fitColumns()
{
    constexpr std::array<int, 4> NameColumns{0, 2, 3, 4};
    QHeaderView *header = m_list->header();
    const QMargins margins = layout()->contentsMargins();
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 2 * m_list->frameWidth();
    const int room = width() - margins.left() - margins.right() - bar;
    int tooMuch = -room;
    int ofNames = 0;
    for (int column = 0; column < PreviewModel::ColumnCount; ++column) {
        m_list->resizeColumnToContents(column);
        tooMuch += header->sectionSize(column);
        if (std::ranges::find(NameColumns, column) != NameColumns.end())
            ofNames += header->sectionSize(column);
    }
    const int remarks = header->sectionSize(PreviewModel::RemarkColumn);
    const int given = std::clamp(remarks - room / 3, 0, std::max(tooMuch, 0));
    header->resizeSection(PreviewModel::RemarkColumn, remarks - given);
    tooMuch -= given;
    if (tooMuch <= 0)
        return;
    for (const int column : NameColumns) {
        const int size = header->sectionSize(column);
        header->resizeSection(
            column, std::max(header->sectionSizeHint(column), size - (tooMuch * size + ofNames - 1) / ofNames));
    }
}

void preview::showRemark()
{
    const QModelIndex current = m_list->currentIndex();
    m_remark->setText(current.isValid() ? m_model->lineAt(current.row()).remarkText : QString());
}

} // namespace ravlin
