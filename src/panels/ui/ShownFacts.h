#pragma once

#include "panels/LibraryFacts.h"

namespace qb {

/// Facts of a library that a panel shows, as properties: each that is set is shown at once.
class ShownFacts {
public:
    Date DatabaseLastBackedUp() const { return m_facts.LastBackedUp; }
    void SetDatabaseLastBackedUp(Date date) { Let(&LibraryFacts::LastBackedUp, date); }
    qb::ReplicaType ReplicaType() const { return m_facts.Type; }
    void SetReplicaType(qb::ReplicaType type) { Let(&LibraryFacts::Type, type); }
    Date ReplicaLastSynchronized() const { return m_facts.LastSynchronized; }
    void SetReplicaLastSynchronized(Date date) { Let(&LibraryFacts::LastSynchronized, date); }
    int ReplicaNoOfChildren() const { return m_facts.Children; }
    void SetReplicaNoOfChildren(int count) { Let(&LibraryFacts::Children, count); }

protected:
    ShownFacts() = default;
    ~ShownFacts() = default;

    virtual void ShowFacts() = 0;

    LibraryFacts m_facts;

private:
    template <class Fact>
    void Let(Fact LibraryFacts::*fact, const Fact& value)
    {
        m_facts.*fact = value;
        ShowFacts();
    }
};

} // namespace qb
