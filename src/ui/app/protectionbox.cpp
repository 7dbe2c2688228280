// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/protectionbox.h"

#include "core/app/idiomas.h"
#include "ui/controls/making.h"

#include <QCheckBox>
#include <QVBoxLayout>

namespace ravlin {

ProtectionBox::ProtectionBox(QWidget *parent)
    : QGroupBox(parent), m_protections{{{&FurtherOptions::onlyEditedFields, Text::CheckOnlyEdited, Text::TipOnlyEdited,
                                            made<QCheckBox>("chcampos", this)},
                             {&FurtherOptions::keepSelection, Text::CheckKeepSelection, Text::TipKeepSelection,
                                 made<QCheckBox>("chseleccion", this)},
                             {&FurtherOptions::keepSubfolders, Text::CheckKeepSubfolders, Text::TipKeepSubfolders,
                                 made<QCheckBox>("chsubcarpetas", this)},
                             {&FurtherOptions::skipTrashFolders, Text::CheckSkipTrash, Text::TipSkipTrash,
                                 made<QCheckBox>("chpapelera", this)}}}
{
    setObjectName(QStringLiteral("protection"));
    auto *rows = new QVBoxLayout(this);
    for (const Protection &protection : m_protections)
        rows->addWidget(protection.box);
}

void ProtectionBox::show(const FurtherOptions &options)
{
    for (const Protection &protection : m_protections)
        protection.box->setChecked(options.*protection.option);
}

void ProtectionBox::offer()
{
    for (const Protection &protection : m_protections)
        protection.box->setChecked(true);
}

void ProtectionBox::choose(FurtherOptions &options) const
{
    for (const Protection &protection : m_protections)
        options.*protection.option = protection.box->isChecked();
}

void ProtectionBox::applyCaptions(const Captions &captions)
{
    setTitle(captions.text(Text::TitleProtection));
    for (const Protection &protection : m_protections) {
        protection.box->setText(captions.text(protection.caption));
        protection.box->setToolTip(captions.text(protection.tip));
        protection.box->setAccessibleDescription(captions.text(protection.tip));
    }
}

} // namespace ravlin
