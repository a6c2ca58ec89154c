#pragma once

#include "find/FindPlaces.h"
#include "finder/FindSearch.h"

#include <QAbstractListModel>

namespace qb {

/// The hits of a search as one list: each item, below it its places with the lines around them. Places are looked up as
/// the list is scrolled to them.
class FindHitList : public QAbstractListModel {
    Q_OBJECT

public:
    /// Of an item that has more places the first ones are listed, and a row that tells how many there are.
    static constexpr size_t MostPlaces = 20;
    static constexpr size_t ItemsAtATime = 50;
    static constexpr int ContextLines = 2;

    struct Row {
        enum class Is { Item, Place, More } What = Is::Item;
        FindHit Hit;
        qsizetype Place = 0; ///< its number among the places of its text, from 0
        FindPlace Found;     ///< of a place
        qint64 Count = 0;    ///< of an item: its places; of More: those that are not listed
    };

    /// @p search must outlive this.
    explicit FindHitList(FindSearch& search, QObject* parent = nullptr);

    const Row& At(const QModelIndex& index) const { return m_rows[size_t(index.row())]; }
    QString TitleOf(const Row& row) const;
    /// The titles of the items above it, from the top: "folder › sub-folder".
    QString PathOf(const Row& row) const;
    /// The language that a place is to be coloured by: the name of the item's own, or empty for the library's. Nothing
    /// for a text that is no code.
    std::optional<QString> LanguageOf(const Row& row) const;
    /// The row of an item; -1 when it is not listed.
    int RowOfItem(qint64 item) const;

    // QAbstractListModel
    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    void Refill();
    std::vector<Row> NextRows();
    void AddHit(const FindHit& hit, std::vector<Row>& rows) const;

    FindSearch& m_search;
    std::shared_ptr<const FindSnapshot> m_texts; ///< that the rows are of
    quint64 m_number = 0;                        ///< of the query
    std::vector<Row> m_rows;
    size_t m_listed = 0; ///< hits
    bool m_fetching = false;
};

} // namespace qb
