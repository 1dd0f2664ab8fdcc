// A collection of pointers that owns what they point to.
#pragma once

#include "qzUtils/xvector.h"

namespace vorn {

// V is a vector of pointers. What stands in it is deleted with it, or by DeleteAndClear.
template <class V>
class AutoCollectionOfPtr : public V {
public:
    AutoCollectionOfPtr() = default;
    AutoCollectionOfPtr(const AutoCollectionOfPtr&) = delete;
    AutoCollectionOfPtr& operator=(const AutoCollectionOfPtr&) = delete;
    ~AutoCollectionOfPtr() { DeleteAndClear(); }

    void DeleteAndClear() {
        for (auto* element : *this)
            delete element;
        this->clear();
    }
};

}  // namespace vorn
