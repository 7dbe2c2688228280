// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renaming.h"

#include "core/files/renaming/renamingdraft.h"

#include <algorithm>

namespace ravlin {

namespace {

std::size_t countRows(const std::vector<RenameRow> &rows, RenameState state)
{
    return static_cast<std::size_t>(std::ranges::count(rows, state, &RenameRow::state));
}

} // namespace

RenamingPlan::RenamingPlan(platform::FileSystem &fileSystem, std::vector<RenameWish> wishes)
    : m_draft(std::make_unique<Draft>(fileSystem, std::move(wishes)))
{
}

RenamingPlan::RenamingPlan(RenamingPlan &&) noexcept = default;
RenamingPlan &RenamingPlan::operator=(RenamingPlan &&) noexcept = default;
RenamingPlan::~RenamingPlan() = default;

const std::vector<RenameRow> &RenamingPlan::rows() const
{
    return m_draft->rows;
}

std::optional<std::size_t> RenamingPlan::nextClash() const
{
    if (m_draft->openClashes.empty())
        return std::nullopt;
    return static_cast<std::size_t>(m_draft->openClashes.front());
}

void RenamingPlan::answer(std::size_t row, ClashAnswer answer)
{
    m_draft->answers[row] = answer;
    m_draft->resolve();
}

void RenamingPlan::answerAll(ClashAnswer answer)
{
    m_draft->answerForAll = answer;
    m_draft->resolve();
}

std::size_t RenamingPlan::count(RenameState state) const
{
    return countRows(m_draft->rows, state);
}

std::size_t RenamingOutcome::count(RenameState state) const
{
    return countRows(rows, state);
}

} // namespace ravlin
