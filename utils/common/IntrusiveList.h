// An intrusive, doubly linked, circular list: elements carry their own link, so insertion
// and removal never allocate and an element can unlink itself in constant time.
//
// Encoding. A link is two words: the next field holds the next element's address (always
// even), or at the end of the ring the sentinel's address with the low bit set; the previous
// field holds the address of the previous next-field. The list itself starts with such a
// link, its sentinel: its next field is the first element (or the end mark) and its previous
// field is the address of the last link's next field. An unlinked link is a ring of its own:
// it points to itself with the low bit set, so that unlinking it again changes nothing.
// Iteration stops at the first odd next value.
#pragma once

#include <cstddef>
#include <cstdint>

#include "utils/common/CVLogger.h"

#define QM_INTRUSIVE_LIST_MODULE "utils\\common\\IntrusiveList"

struct CIntrusiveLink {
    void* m_pNext;
    void** m_ppPrev;

    CIntrusiveLink() { SelfLink(); }
    // A copy of an element is not a member of the original's list.
    CIntrusiveLink(const CIntrusiveLink&) { SelfLink(); }
    CIntrusiveLink& operator=(const CIntrusiveLink&) { return *this; }

    void SelfLink() {
        m_pNext = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(this) | 1);
        m_ppPrev = &m_pNext;
    }
    bool IsLinked() const { return m_ppPrev != &m_pNext; }

    // Splices the link out of its ring and leaves it self-linked; offset is the position of
    // the link inside the elements of that ring (unused when the next is the sentinel).
    void Unlink(std::size_t offset) {
        void* next = m_pNext;
        *m_ppPrev = next;
        std::uintptr_t bits = reinterpret_cast<std::uintptr_t>(next);
        CIntrusiveLink* nextLink = (bits & 1) ? reinterpret_cast<CIntrusiveLink*>(bits & ~(std::uintptr_t)1)
                                              : reinterpret_cast<CIntrusiveLink*>(static_cast<char*>(next) + offset);
        nextLink->m_ppPrev = m_ppPrev;
        SelfLink();
    }
};

template <class T>
class CIntrusiveList {
public:
    // The link's position inside T must be given (here or by SetOffset) before first use.
    CIntrusiveList() : m_offset((std::size_t)-1) {}
    explicit CIntrusiveList(std::size_t offset) : m_offset(offset) {}
    CIntrusiveList(const CIntrusiveList&) = delete;
    CIntrusiveList& operator=(const CIntrusiveList&) = delete;

    void SetOffset(std::size_t offset) { m_offset = offset; }
    std::size_t GetOffset() const { return m_offset; }

    // Appends node at the tail, unlinking it first from wherever it was.
    void PushBack(T* node) {
        if (!node || !CheckOffset()) return;
        if ((std::size_t)node & 1) {
            _cvassert_("!((size_t) node & 1)", QM_INTRUSIVE_LIST_MODULE, __LINE__);
            return;
        }
        CIntrusiveLink* link = LinkOf(node);
        link->Unlink(m_offset);
        link->m_pNext = EndMark();
        link->m_ppPrev = m_sentinel.m_ppPrev;
        *m_sentinel.m_ppPrev = node;
        m_sentinel.m_ppPrev = &link->m_pNext;
    }

    // Splices node out (nothing happens to a node that is not linked).
    void Remove(T* node) {
        if (!node || !CheckOffset()) return;
        LinkOf(node)->Unlink(m_offset);
    }

    T* First() const { return Element(m_sentinel.m_pNext); }
    T* Next(const T* node) const {
        if (!node || !CheckOffset()) return nullptr;
        return Element(LinkOf(node)->m_pNext);
    }
    bool IsEmpty() const { return First() == nullptr; }
    bool Contains(const T* node) const {
        for (T* p = First(); p; p = Next(p))
            if (p == node) return true;
        return false;
    }

private:
    bool CheckOffset() const {
        if (m_offset != (std::size_t)-1) return true;
        _cvassert_("m_offset != (size_t) -1", QM_INTRUSIVE_LIST_MODULE, __LINE__);
        return false;
    }
    void* EndMark() const {
        return reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(&m_sentinel) | 1);
    }
    CIntrusiveLink* LinkOf(const T* node) const {
        return reinterpret_cast<CIntrusiveLink*>(const_cast<char*>(reinterpret_cast<const char*>(node)) + m_offset);
    }
    static T* Element(void* next) {
        return (reinterpret_cast<std::uintptr_t>(next) & 1) ? nullptr : static_cast<T*>(next);
    }

    CIntrusiveLink m_sentinel;
    std::size_t m_offset;
};
