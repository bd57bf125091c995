// The framework's doubly linked lists: CList<TYPE, ARG_TYPE> and CStringList. Nodes are
// taken from blocks of nBlockSize nodes (10 by default) and kept on a free list until
// RemoveAll, as the framework does. A POSITION is an opaque handle of a node.
//
// Reading the head or tail of an empty list, or using a null POSITION, is a caller's error
// that the framework only asserts; here it throws CInvalidArgException instead of touching
// memory that is not a node.
#pragma once

#include <new>
#include <utility>
#include <vector>

#include "utils/framework/CObject.h"
#include "utils/framework/CString.h"
#include "utils/framework/exceptions.h"
#include "utils/framework/wintypes.h"

struct __POSITION {};
typedef __POSITION* POSITION;

template <class TYPE, class ARG_TYPE = const TYPE&>
class CList : public CObject {
protected:
    struct CNode {
        CNode* pNext;
        CNode* pPrev;
        TYPE data;
    };

public:
    explicit CList(INT_PTR nBlockSize = 10) : m_nBlockSize(nBlockSize > 0 ? nBlockSize : 10) {}
    ~CList() override { RemoveAll(); }
    CList(const CList&) = delete;
    CList& operator=(const CList&) = delete;

    INT_PTR GetCount() const { return m_nCount; }
    INT_PTR GetSize() const { return m_nCount; }
    BOOL IsEmpty() const { return m_nCount == 0; }

    TYPE& GetHead() { return Checked(m_pNodeHead)->data; }
    const TYPE& GetHead() const { return Checked(m_pNodeHead)->data; }
    TYPE& GetTail() { return Checked(m_pNodeTail)->data; }
    const TYPE& GetTail() const { return Checked(m_pNodeTail)->data; }

    TYPE RemoveHead() {
        CNode* node = Checked(m_pNodeHead);
        TYPE value = node->data;
        RemoveNode(node);
        return value;
    }
    TYPE RemoveTail() {
        CNode* node = Checked(m_pNodeTail);
        TYPE value = node->data;
        RemoveNode(node);
        return value;
    }

    POSITION AddHead(ARG_TYPE newElement) { return InsertNode(nullptr, m_pNodeHead, newElement); }
    POSITION AddTail(ARG_TYPE newElement) { return InsertNode(m_pNodeTail, nullptr, newElement); }

    void RemoveAll() {
        for (CNode* node = m_pNodeHead; node;) {
            CNode* next = node->pNext;
            node->data.~TYPE();
            node = next;
        }
        for (void* block : m_blocks) ::operator delete(block);
        m_blocks.clear();
        m_pNodeHead = m_pNodeTail = m_pNodeFree = nullptr;
        m_nCount = 0;
    }

    POSITION GetHeadPosition() const { return reinterpret_cast<POSITION>(m_pNodeHead); }
    POSITION GetTailPosition() const { return reinterpret_cast<POSITION>(m_pNodeTail); }
    TYPE& GetNext(POSITION& rPosition) {
        CNode* node = Checked(Node(rPosition));
        rPosition = reinterpret_cast<POSITION>(node->pNext);
        return node->data;
    }
    const TYPE& GetNext(POSITION& rPosition) const {
        CNode* node = Checked(Node(rPosition));
        rPosition = reinterpret_cast<POSITION>(node->pNext);
        return node->data;
    }
    TYPE& GetPrev(POSITION& rPosition) {
        CNode* node = Checked(Node(rPosition));
        rPosition = reinterpret_cast<POSITION>(node->pPrev);
        return node->data;
    }
    TYPE& GetAt(POSITION position) { return Checked(Node(position))->data; }
    const TYPE& GetAt(POSITION position) const { return Checked(Node(position))->data; }
    void SetAt(POSITION pos, ARG_TYPE newElement) { Checked(Node(pos))->data = newElement; }
    void RemoveAt(POSITION position) { RemoveNode(Checked(Node(position))); }

    POSITION InsertBefore(POSITION position, ARG_TYPE newElement) {
        if (!position) return AddHead(newElement);
        CNode* node = Node(position);
        return InsertNode(node->pPrev, node, newElement);
    }
    POSITION InsertAfter(POSITION position, ARG_TYPE newElement) {
        if (!position) return AddTail(newElement);
        CNode* node = Node(position);
        return InsertNode(node, node->pNext, newElement);
    }

    POSITION Find(ARG_TYPE searchValue, POSITION startAfter = nullptr) const {
        CNode* node = startAfter ? Node(startAfter)->pNext : m_pNodeHead;
        for (; node; node = node->pNext)
            if (node->data == searchValue) return reinterpret_cast<POSITION>(node);
        return nullptr;
    }
    POSITION FindIndex(INT_PTR nIndex) const {
        if (nIndex < 0 || nIndex >= m_nCount) return nullptr;
        CNode* node = m_pNodeHead;
        while (nIndex--) node = node->pNext;
        return reinterpret_cast<POSITION>(node);
    }

private:
    static CNode* Node(POSITION position) { return reinterpret_cast<CNode*>(position); }
    static CNode* Checked(CNode* node) {
        if (!node) AfxThrowInvalidArgException();
        return node;
    }

    POSITION InsertNode(CNode* prev, CNode* next, ARG_TYPE value) {
        if (!m_pNodeFree) {
            // A new block of nodes, threaded onto the free list.
            auto* block = static_cast<CNode*>(::operator new(sizeof(CNode) * (size_t)m_nBlockSize));
            m_blocks.push_back(block);
            for (INT_PTR i = m_nBlockSize - 1; i >= 0; --i) {
                block[i].pNext = m_pNodeFree;
                m_pNodeFree = &block[i];
            }
        }
        CNode* node = m_pNodeFree;
        CNode* nextFree = node->pNext;
        ::new (static_cast<void*>(&node->data)) TYPE(value);
        m_pNodeFree = nextFree;
        node->pPrev = prev;
        node->pNext = next;
        (prev ? prev->pNext : m_pNodeHead) = node;
        (next ? next->pPrev : m_pNodeTail) = node;
        ++m_nCount;
        return reinterpret_cast<POSITION>(node);
    }

    void RemoveNode(CNode* node) {
        (node->pPrev ? node->pPrev->pNext : m_pNodeHead) = node->pNext;
        (node->pNext ? node->pNext->pPrev : m_pNodeTail) = node->pPrev;
        node->data.~TYPE();
        node->pNext = m_pNodeFree;
        m_pNodeFree = node;
        if (--m_nCount == 0) RemoveAll();  // the framework frees the blocks with the last node
    }

    CNode* m_pNodeHead = nullptr;
    CNode* m_pNodeTail = nullptr;
    CNode* m_pNodeFree = nullptr;
    INT_PTR m_nCount = 0;
    INT_PTR m_nBlockSize;
    std::vector<void*> m_blocks;
};

// A list of CString.
class CStringList : public CList<CString, const char*> {
public:
    explicit CStringList(INT_PTR nBlockSize = 10) : CList<CString, const char*>(nBlockSize) {}
};
