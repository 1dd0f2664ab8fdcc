// Bytes in a list of pages of one size: appending never moves what is there.
#pragma once

#include "qzUtils/xstring.h"

namespace vorn {

class PagedBuffer {
public:
    // No page is allocated before the first byte. REQUIRES: pageSize > 0.
    explicit PagedBuffer(ssize_t pageSize) : m_pageSize(pageSize) {}
    ~PagedBuffer();
    PagedBuffer(const PagedBuffer&) = delete;
    PagedBuffer& operator=(const PagedBuffer&) = delete;

    void Append(const char* p, ssize_t n) {
        if (n <= m_room) {
            if (n > 0)
                std::memcpy(m_end, p, static_cast<std::size_t>(n));
            m_end += n;
            m_room -= n;
        } else {
            AppendAcrossPages(p, n);
        }
    }

    // The number of bytes held.
    ssize_t size() const { return m_pages.size() * m_pageSize - m_room; }

    // Replaces s by the bytes. Where memory runs out, s is as it was.
    void CopyTo(xstring& s) const;

    // Empties the buffer; its first page is kept for what comes next.
    void Clear();

private:
    void AppendAcrossPages(const char* p, ssize_t n);
    void AddPage();

    ssize_t m_pageSize;
    xvector<char*> m_pages;
    char* m_end = nullptr;  // where the next byte goes
    ssize_t m_room = 0;     // bytes left in the last page
};

}  // namespace vorn
