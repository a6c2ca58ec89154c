#include "conflicts/SequenceDiff.h"

#include "platform/system/RuntimeError.h"

#include <QByteArray>
#include <git2.h>

namespace qb {

using namespace Qt::StringLiterals;

namespace {

/// The library has to be told once that it is used.
void UseDiffLibrary()
{
    static const int users = git_libgit2_init();
    if (users < 0)
        throw RuntimeError(ErrorNumber::Internal, u"The library that compares texts can't be started."_s,
                           u"SequenceDiff"_s);
}

/// One number a line: the library compares lines.
QByteArray LinesOf(const QList<int>& numbers)
{
    QByteArray lines;
    lines.reserve(numbers.size() * 6);
    for (const int number : numbers)
        lines += QByteArray::number(number) + '\n';
    return lines;
}

/// Where nothing stands, the line before it is named; else the line itself, from 1.
int PlaceOf(int start, int length)
{
    return length == 0 ? start : start - 1;
}

int NoteHunk(const git_diff_delta*, const git_diff_hunk* hunk, void* payload)
{
    static_cast<std::vector<SequenceHunk>*>(payload)->push_back({.First = PlaceOf(hunk->old_start, hunk->old_lines),
                                                                 .FirstLength = hunk->old_lines,
                                                                 .Second = PlaceOf(hunk->new_start, hunk->new_lines),
                                                                 .SecondLength = hunk->new_lines});
    return 0;
}

} // namespace

std::vector<SequenceHunk> DiffSequences(const QList<int>& first, const QList<int>& second)
{
    if (first == second)
        return {};
    UseDiffLibrary();
    git_diff_options options;
    git_diff_options_init(&options, GIT_DIFF_OPTIONS_VERSION);
    options.context_lines = 0;
    options.interhunk_lines = 0;
    options.flags = GIT_DIFF_FORCE_TEXT;
    options.max_size = -1; // no text is too large
    const QByteArray left = LinesOf(first);
    const QByteArray right = LinesOf(second);
    std::vector<SequenceHunk> hunks;
    const int result = git_diff_buffers(left.constData(), size_t(left.size()), "left", right.constData(),
                                        size_t(right.size()), "right", &options, nullptr, nullptr, NoteHunk, nullptr,
                                        &hunks);
    if (result != 0)
        throw RuntimeError(ErrorNumber::Internal, u"The texts can't be compared."_s, u"SequenceDiff"_s);
    return hunks;
}

} // namespace qb
