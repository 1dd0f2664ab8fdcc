#include "qzUtils/PagedBuffer.h"

#include <memory>

namespace vorn {

PagedBuffer::~PagedBuffer() {
    for (const char* page : m_pages)
        delete[] page;
}

void PagedBuffer::AppendAcrossPages(const char* p, ssize_t n) {
    while (n > 0) {
        if (m_room == 0)
            AddPage();
        const ssize_t part = n < m_room ? n : m_room;
        std::memcpy(m_end, p, static_cast<std::size_t>(part));
        m_end += part;
        m_room -= part;
        p += part;
        n -= part;
    }
}

void PagedBuffer::AddPage() {
    std::unique_ptr<char[]> page(new char[static_cast<std::size_t>(m_pageSize)]);
    m_pages.push_back(page.get());
    m_end = page.release();
    m_room = m_pageSize;
}

void PagedBuffer::CopyTo(xstring& s) const {
    const ssize_t bytes = size();
    s.reserve(bytes);
    s.clear();
    for (const char* page : m_pages) {
        const ssize_t left = bytes - s.size();
        s.append(page, page + (left < m_pageSize ? left : m_pageSize));
    }
}

void PagedBuffer::Clear() {
    while (m_pages.size() > 1) {
        delete[] m_pages[m_pages.size() - 1];
        m_pages.erase(m_pages.end() - 1);
    }
    m_end = m_pages.empty() ? nullptr : m_pages[0];
    m_room = m_pages.empty() ? 0 : m_pageSize;
}

}  // namespace vorn
