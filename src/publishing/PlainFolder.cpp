#include "platform/richtext/Rtf.h"
#include "platform/system/RuntimeError.h"
#include "platform/system/SafeNames.h"
#include "platform/system/SourceForm.h"
#include "publishing/BranchPublisher.h"

namespace qb {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype LongestPath = 3000; // bytes, below a folder that has a path of its own

/// What an import of the folder would make the branch of: items with others below them are folders, all others files
/// with their code. Where an item is both, its code stands inside, under its title.
class PlainFolder : public BranchPublisher {
public:
    explicit PlainFolder(const Task& task) : BranchPublisher(task), m_names(UniqueNames::Compare::Exactly)
    {
        const std::vector<PublishedNode>& nodes = Branch().Nodes();
        for (size_t place = 0; place < nodes.size(); ++place) {
            const PublishedNode& node = nodes[place];
            const bool isFolder = !node.Children.empty();
            const bool isTheFolder = place == 0 && isFolder && !Branch().IsWholeLibrary();
            const QString above = node.Parent >= 0 ? m_paths[size_t(node.Parent)] : QString();
            m_paths.push_back(isTheFolder
                                  ? QString()
                                  : above + m_names.Take(above, FileNameOf(node.Title)) + (isFolder ? u"/"_s : u""_s));
            if (m_paths.back().toUtf8().size() > LongestPath)
                throw RuntimeError(ErrorNumber::TooLong,
                                   u"'%1' stands too deep for a folder; nothing was written."_s.arg(node.Title),
                                   u"PlainFolder"_s);
        }
    }

    void Add(int place, const PublishedItem& item) override
    {
        const QString& path = m_paths[size_t(place)];
        const bool isFolder = !Branch().Node(place).Children.empty();
        if (isFolder && item.Code.isEmpty())
            return;
        RichTextDocument document(CodeFont);
        ReadRtf(item.Code, document);
        WriteStaged(isFolder ? path + m_names.Take(path, FileNameOf(item.Title)) : path,
                    EncodeSource(document.Text(), document.SourceForm()));
    }

private:
    UniqueNames m_names;
    std::vector<QString> m_paths; ///< by place; of a folder with its "/"
};

} // namespace

std::unique_ptr<BranchPublisher> MakePlainFolder(const BranchPublisher::Task& task)
{
    return std::make_unique<PlainFolder>(task);
}

} // namespace qb
