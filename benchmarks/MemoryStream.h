#pragma once

#include <istream>
#include <streambuf>
#include <string>

/// A stream over a text that isn't copied, so that the document itself doesn't count as memory of who reads it.
class MemoryStream : public std::istream {
 public:
  explicit MemoryStream(const std::string& text) : std::istream(nullptr), fBuffer(text) { rdbuf(&fBuffer); }

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(const std::string& text) {
      char* begin = const_cast<char*>(text.data());  // the get area is never written to
      setg(begin, begin, begin + text.size());
    }

   protected:
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction, std::ios_base::openmode) override {
      char* base = direction == std::ios_base::beg ? eback() : direction == std::ios_base::cur ? gptr() : egptr();
      char* target = base + offset;
      if (target < eback() || target > egptr()) return pos_type(off_type(-1));
      setg(eback(), target, egptr());
      return pos_type(target - eback());
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override {
      return seekoff(off_type(position), std::ios_base::beg, which);
    }
  };
  Buffer fBuffer;
};
