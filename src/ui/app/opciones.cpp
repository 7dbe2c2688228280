// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/opciones.h"

#include "core/app/options.h"
#include "ui/app/furtheroptions.h"
#include "ui/app/program.h"
#include "ui/controls/making.h"
#include "ui/controls/wheelguard.h"
#include "ui/online/mainform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include <array>
#include <limits>
#include <tuple>

namespace ravlin {

namespace {

/// The texts of the tag-save modes 1 to 5.
constexpr std::array ModeCaptions{
    Caption::SaveV1Only, Caption::SaveV2Only, Caption::SaveBoth, Caption::SaveV1RemoveV2, Caption::SaveV2RemoveV1};
constexpr int FieldLetters = 34; ///< width of the text boxes in average letters

} // namespace

opciones::opciones(Program &program, QWidget *parent) : QDialog(parent), m_program(program)
{
    setObjectName(QStringLiteral("opciones"));
    createControls();
    createLayout();
    load();
    connect(cidioma, &QComboBox::activated, this, &opciones::changeLanguage);
    connect(upd, &QPushButton::clicked, this, &opciones::openUpdate);
    connect(m_ok, &QPushButton::clicked, this, &opciones::accept);
    connect(m_cancel, &QPushButton::clicked, this, &opciones::reject);
    cidioma->setFocus();
}

void opciones::createControls()
{
    m_pages = made<QTabWidget>("optionPages", this);
    m_further = new furtheroptions(m_program.captions, m_pages);
    general = made<QGroupBox>("general", this, QStringLiteral("general"));
    freedb = made<QGroupBox>("freedb", this, QStringLiteral("freedb"));
    lidioma = made<QLabel>("lidioma", general, QStringLiteral("lenguage"));
    cidioma = made<QComboBox>("cidioma", general);
    cidioma->addItems({QStringLiteral("spanish"), QStringLiteral("english"), QStringLiteral("french")});
    cidioma->setCurrentText(QStringLiteral("english"));
    Label1 = made<QLabel>("Label1", general, QStringLiteral("tags"));
    ctags = made<QComboBox>("ctags", general);
    opreme = made<QCheckBox>("opreme", general, QStringLiteral("remember last directory"));
    lserver = made<QLabel>("lserver", freedb, QStringLiteral("freedb server"));
    tserver = made<QLineEdit>("tserver", freedb, defaults::Server.toString());
    lmail = made<QLabel>("lmail", freedb, QStringLiteral("email"));
    tmail = made<QLineEdit>("tmail", freedb, defaults::Mail.toString());
    m_update = made<QGroupBox>("update", this, QStringLiteral("update"));
    upd = made<QPushButton>("upd", m_update);
    upd->setAutoDefault(false);
    m_ok = made<QPushButton>("ok", this, QStringLiteral("save"));
    m_ok->setDefault(true);
    m_cancel = made<QPushButton>("cancel", this, QStringLiteral("cancel"));
    m_cancel->setAutoDefault(false);

    lidioma->setBuddy(cidioma);
    Label1->setBuddy(ctags);
    lserver->setBuddy(tserver);
    lmail->setBuddy(tmail);
    guardAgainstWheel(cidioma);
    guardAgainstWheel(ctags);
    for (QLineEdit *edit : {tserver, tmail}) {
        edit->setMaxLength(std::numeric_limits<int>::max()); // stored as typed, however long
        edit->setMinimumWidth(FieldLetters * fontMetrics().averageCharWidth());
    }
}

QWidget *opciones::createFirstPage()
{
    auto *generalRows = new QFormLayout(general);
    generalRows->addRow(lidioma, cidioma);
    generalRows->addRow(Label1, ctags);
    generalRows->addRow(opreme);
    auto *freedbRows = new QFormLayout(freedb);
    freedbRows->addRow(lserver, tserver);
    freedbRows->addRow(lmail, tmail);
    auto *updateRow = new QHBoxLayout(m_update);
    updateRow->addWidget(upd);
    updateRow->addStretch();
    for (QFormLayout *rows : {generalRows, freedbRows})
        rows->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    auto *page = made<QWidget>("firstPage", m_pages);
    auto *rows = new QVBoxLayout(page);
    rows->addWidget(general);
    rows->addWidget(freedb);
    rows->addWidget(m_update);
    rows->addStretch();
    return page;
}

void opciones::createLayout()
{
    m_pages->addTab(createFirstPage(), QString());
    m_pages->addTab(m_further, QString());
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_pages);
    rows->addLayout(buttons);
    rows->setSizeConstraint(QLayout::SetMinimumSize); // longer texts of another language widen the dialog
}

void opciones::load()
{
    Settings &settings = m_program.settings;
    // Another instance may have saved since. What can't be read stays as this one knows it.
    std::ignore = settings.reload();
    const QString code = settings.read(settingskey::Idioma);
    const QString language = code.isEmpty() ? QStringLiteral("english") : languageNameFromCode(code);
    if (!language.isEmpty())
        cidioma->setCurrentText(language);
    m_further->show(FurtherOptions::restored(settings));
    changeLanguage();
    if (const QString remembers = settings.read(settingskey::Recuerda);
        remembers == QStringLiteral("si") || remembers == QStringLiteral("no"))
        opreme->setChecked(remembers == QStringLiteral("si"));
    if (const QString server = settings.read(settingskey::Servidor); !server.isEmpty())
        tserver->setText(server);
    if (const QString mail = settings.read(settingskey::Correo); !mail.isEmpty())
        tmail->setText(mail);
    tserver->setCursorPosition(0);
    tmail->setCursorPosition(0);
}

void opciones::changeLanguage()
{
    speakLanguage(m_program, cidioma->currentText());
    applyCaptions();
}

void opciones::applyCaptions()
{
    const Captions &captions = m_program.captions;
    setWindowTitle(captions.text(Caption::Options));
    lserver->setText(captions.text(Caption::Server));
    lidioma->setText(captions.text(Caption::Language));
    opreme->setText(captions.text(Caption::RememberLastFolder));
    m_update->setTitle(captions.text(Caption::ProgramUpdate));
    upd->setText(captions.text(Caption::CheckForNewVersion));
    m_ok->setText(captions.text(Caption::Save));
    m_cancel->setText(captions.text(Caption::Cancel));
    for (QPushButton *button : {m_ok, m_cancel})
        makeRoomy(button);
    m_pages->setTabText(0, captions.text(Caption::Options));
    m_pages->setTabText(1, captions.text(Text::TabFurtherOptions));
    m_pages->tabBar()->setAccessibleName(captions.text(Text::NameOptionPages));
    for (const QLabel *label : {lidioma, Label1, lserver, lmail})
        label->buddy()->setAccessibleName(label->text());
    ctags->clear();
    for (std::size_t i = 0; i < ModeCaptions.size(); ++i)
        ctags->addItem(captions.text(ModeCaptions[i]), FirstTagSaveMode + static_cast<int>(i));
    showStoredMode();
    m_further->applyCaptions();
    adjustSize();
}

void opciones::showStoredMode()
{
    const QString stored = m_program.settings.read(settingskey::Tags);
    const std::optional<int> mode = stored.isEmpty() ? defaults::TagSaveModeShown : tagSaveModeFromText(stored);
    ctags->setCurrentIndex(mode ? ctags->findData(*mode) : -1);
}

void opciones::storeChoices()
{
    Settings &settings = m_program.settings;
    settings.write(settingskey::Idioma, languageCodeFromName(m_program.captions.languageName()));
    if (const QVariant mode = ctags->currentData(); mode.isValid()) {
        settings.write(settingskey::Tags, QString::number(mode.toInt()));
        m_program.state.tagSaveMode = mode.toInt();
    }
    settings.write(settingskey::Recuerda, opreme->isChecked() ? QStringLiteral("si") : QStringLiteral("no"));
    settings.write(settingskey::Servidor, tserver->text());
    settings.write(settingskey::Correo, tmail->text());
    m_program.state.options = m_further->choices();
    m_program.state.options.store(settings);
}

void opciones::accept()
{
    storeChoices();
    if (const Result<void> saved = m_program.settings.save(); !saved)
        showSaveError(saved.error().detail);
    QDialog::accept();
}

void opciones::openUpdate()
{
    auto *window = new mainform(m_program.settings, m_program.captions, m_program.fileSystem, this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->open();
}

void opciones::showSaveError(const QString &detail)
{
    QMessageBox box(
        QMessageBox::Critical, QString(), m_program.captions.errorText(ErrorCode::Settings), QMessageBox::Ok, this);
    box.setObjectName(QStringLiteral("error"));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(QDir::toNativeSeparators(m_program.settings.path()));
    box.setDetailedText(detail);
    box.exec();
}

} // namespace ravlin
