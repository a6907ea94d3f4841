// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

/**
 * A short list of channels that one thread replaces while another may read it.
 *
 * @thread Each access is whole by itself; who reads twice may read two lists.
 */
class CrossThreadList
{
public:
    using List = std::vector<unsigned char>;

    CrossThreadList() = default;
    CrossThreadList(const CrossThreadList &other) : _list(other.shared()) {}
    CrossThreadList &operator=(const CrossThreadList &other) { return replaceBy(other.shared()); }
    CrossThreadList &operator=(List list) { return replaceBy(std::make_shared<const List>(std::move(list))); }

    List list() const { return *shared(); }
    bool empty() const { return shared()->empty(); }
    void clear() { *this = List(); }

private:
    std::shared_ptr<const List> shared() const { return std::atomic_load(&_list); }
    CrossThreadList &replaceBy(std::shared_ptr<const List> list)
    {
        std::atomic_store(&_list, std::move(list));
        return *this;
    }

    std::shared_ptr<const List> _list = std::make_shared<const List>(); // never null
};
