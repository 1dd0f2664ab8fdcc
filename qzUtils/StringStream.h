// A text stream into memory. Messages are built by writing their pieces to one.
#pragma once

#include "qzUtils/PagedBuffer.h"
#include "qzUtils/xostream.h"

namespace vorn {

// The sink that appends to a buffer, which it does not own.
class PagedBufferOutputStream final : public IOutputStream {
public:
    explicit PagedBufferOutputStream(PagedBuffer& pb) : m_pb(pb) {}
    void WriteStream(const void* p, ssize_t n) override {
        m_pb.Append(static_cast<const char*>(p), n);
    }
    void FlushStream() override {}

private:
    PagedBuffer& m_pb;
};

class StringStream : public xostream {
public:
    // The memory comes in pages of pageSize bytes. REQUIRES: pageSize > 0.
    explicit StringStream(ssize_t pageSize) : m_pb(pageSize), m_outs(m_pb) { Init(m_outs); }

    // Replaces s by the text. With clearStream true the stream is empty afterwards, so that what
    // is written next stands alone.
    void GetString(xstring& s, bool clearStream) {
        m_pb.CopyTo(s);
        if (clearStream)
            clear();
    }

    // The text; the stream is empty afterwards.
    xstring GetString() {
        xstring s;
        GetString(s, true);
        return s;
    }

    // Empties the stream: what is written next is the start of a text, and so of a line.
    void clear() {
        m_pb.Clear();
        BeginLine();
    }

    PagedBuffer m_pb;
    PagedBufferOutputStream m_outs;
};

}  // namespace vorn
