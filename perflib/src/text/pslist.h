// Doubly linked list with an end sentinel, and the interface of test data.
#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

class psString;

// A list that owns its nodes and stores values by copy. Positions stay valid
// until their own node is erased; the end node is part of every list, so an
// empty list has a valid end position. Copies and destructors are not inlined: the
// parameters of every module would hold several of each, half of their code.
template <class T>
class psList {
    struct Node {
        Node* next = nullptr;
        Node* prev = nullptr;
        T value{};
    };

    template <class Value>
    class Position {
      public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = Value*;
        using reference = Value&;

        Position() = default;
        explicit Position(Node* node) : m_node(node) {}
        template <class Other>
        requires(!std::is_same_v<Other, Value> && std::is_const_v<Value>)
            Position(const Position<Other>& other)
            : m_node(other.node()) {}

        reference operator*() const { return m_node->value; }
        pointer operator->() const { return &m_node->value; }
        Position& operator++() { return m_node = m_node->next, *this; }
        Position& operator--() { return m_node = m_node->prev, *this; }
        Position operator++(int) { return std::exchange(*this, Position(m_node->next)); }
        Position operator--(int) { return std::exchange(*this, Position(m_node->prev)); }
        bool operator==(const Position&) const = default;
        Node* node() const { return m_node; }

      private:
        Node* m_node = nullptr;
    };

  public:
    using value_type = T;
    using iterator = Position<T>;
    using const_iterator = Position<const T>;

    psList() : m_end(new Node), m_head(m_end), m_cursor(m_end) {}
    [[gnu::noinline]] psList(const psList& other) : psList() {
        for (const T& value : other) push_back(value);
    }
    [[gnu::noinline]] psList& operator=(const psList& other) {
        if (this != &other) {
            psList copy(other);
            swap(copy);
        }
        return *this;
    }
    [[gnu::noinline]] virtual ~psList() {
        clear();
        delete m_end;
    }

    iterator begin() { return iterator(m_head); }
    iterator end() { return iterator(m_end); }
    const_iterator begin() const { return const_iterator(m_head); }
    const_iterator end() const { return const_iterator(m_end); }
    bool empty() const { return m_head == m_end; }
    int size() const { return static_cast<int>(std::distance(begin(), end())); }
    T& front() { return m_head->value; }
    const T& front() const { return m_head->value; }
    T& back() { return m_end->prev->value; }
    const T& back() const { return m_end->prev->value; }

    iterator insert(iterator pos, const T& value) {
        Node* node = new Node{nullptr, nullptr, value};
        link(node, pos.node());
        return iterator(node);
    }
    void push_back(const T& value) { insert(end(), value); }
    void push_front(const T& value) { insert(begin(), value); }

    // Returns the position behind the erased one. A walk by first()/next() that
    // stands on the erased node goes on behind it.
    iterator erase(iterator pos) {
        Node* next = pos.node()->next;
        if (m_cursor == pos.node()) m_cursor = next;
        unlink(pos.node());
        delete pos.node();
        return iterator(next);
    }
    void clear() {
        while (!empty()) erase(begin());
    }

    void swap(psList& other) noexcept {
        std::swap(m_end, other.m_end);
        std::swap(m_head, other.m_head);
        std::swap(m_cursor, other.m_cursor);
    }

    // The walk that allocation records and the like use: first() sets the
    // cursor, next() moves it; both return null at the end.
    T* first() {
        m_cursor = m_head;
        return next();
    }
    T* next() {
        if (m_cursor == m_end) return nullptr;
        return &std::exchange(m_cursor, m_cursor->next)->value;
    }

    // Moves the nodes of `other` into this list in the order of `less`; both
    // lists are sorted before. Stable: of equal values those of this list come
    // first. A list merged with itself stays as it is.
    template <class Less>
    void merge(psList& other, Less less) {
        if (this == &other) return;
        Node* mine = m_head;
        while (!other.empty()) {
            while (mine != m_end && !less(other.m_head->value, mine->value)) mine = mine->next;
            Node* node = other.m_head;
            if (other.m_cursor == node) other.m_cursor = node->next;
            other.unlink(node);
            link(node, mine);
        }
    }

    // Stable bottom-up merge sort: nodes go one at a time into partial lists of
    // doubling length; the last of the 16 collects everything beyond.
    template <class Less>
    void sort(Less less) {
        if (m_head == m_end || m_head->next == m_end) return;
        std::array<psList, 16> parts;
        std::size_t used = 0;
        while (!empty()) {
            psList carry;
            Node* node = m_head;
            unlink(node);
            carry.link(node, carry.m_end);
            std::size_t i = 0;
            for (; i < used && !parts[i].empty(); ++i) {
                parts[i].merge(carry, less);
                if (i + 1 == parts.size()) break;
                carry.swap(parts[i]);
            }
            if (carry.empty()) continue;
            if (i == used) ++used;
            carry.swap(parts[i]);
        }
        // A longer part holds earlier elements, so it takes the shorter one in.
        for (std::size_t i = 0; i < used; ++i) {
            parts[i].merge(*this, less);
            swap(parts[i]);
        }
        m_cursor = m_end;
    }

  private:
    void link(Node* node, Node* pos) {
        node->next = pos;
        node->prev = pos->prev;
        (pos->prev ? pos->prev->next : m_head) = node;
        pos->prev = node;
    }
    void unlink(Node* node) {
        (node->prev ? node->prev->next : m_head) = node->next;
        node->next->prev = node->prev;
    }

    Node* m_end;
    Node* m_head;
    Node* m_cursor;
};

// What test data can tell and do: report size and description, and keep a copy
// of themselves that is put back between timed calls.
class psObject {
  public:
    psObject() = default;
    psObject(const psObject&) = default;
    psObject& operator=(const psObject&) = default;
    virtual ~psObject() = default;

    virtual int objectSize() const;
    virtual psString objectInfo() const;
    virtual int reserveCopy();
    virtual int setReservedCopy();
    virtual void deleteReservedCopy();
};
