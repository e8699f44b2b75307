#include "io/Gzip.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace tcamshow {

struct Gzip::Stream {
  static constexpr std::size_t packedSize = std::size_t{64} << 10;

  z_stream zlib{};
  unsigned char packed[packedSize] = {};
  bool isInMember = true;
};

Gzip::Gzip(std::string_view start) : stream_(std::make_unique<Stream>()) {
  std::size_t const size = std::min(start.size(), Stream::packedSize);
  std::memcpy(stream_->packed, start.data(), size);
  stream_->zlib.next_in = stream_->packed;
  stream_->zlib.avail_in = static_cast<uInt>(size);
  constexpr int gzipWindow = 15 + 16;  // the largest window, and gzip's header
  if (inflateInit2(&stream_->zlib, gzipWindow) != Z_OK) throw std::bad_alloc();
}

Gzip::~Gzip() { inflateEnd(&stream_->zlib); }

std::size_t Gzip::read(char* buffer, std::size_t size, const Read& readPacked) {
  z_stream& zlib = stream_->zlib;
  zlib.next_out = reinterpret_cast<unsigned char*>(buffer);
  zlib.avail_out = static_cast<uInt>(std::min(size, Stream::packedSize));
  auto const room = zlib.avail_out;
  while (zlib.avail_out == room) {
    if (zlib.avail_in == 0) {
      auto* const packed = reinterpret_cast<char*>(stream_->packed);
      std::size_t const count = readPacked(packed, Stream::packedSize);
      if (count == 0) {
        if (stream_->isInMember) throw std::runtime_error("the compressed data ends early");
        return 0;
      }
      zlib.next_in = stream_->packed;
      zlib.avail_in = static_cast<uInt>(count);
    }
    if (!stream_->isInMember) {
      // Another member may follow, or zeros that fill a block.
      if (*zlib.next_in == 0) {
        ++zlib.next_in;
        --zlib.avail_in;
        continue;
      }
      bool const isMember = *zlib.next_in == 0x1F;
      if (!isMember || inflateReset(&zlib) != Z_OK) {
        throw std::runtime_error("the compressed data is damaged");
      }
      stream_->isInMember = true;
    }
    switch (inflate(&zlib, Z_NO_FLUSH)) {
      case Z_OK:
      case Z_BUF_ERROR:
        break;
      case Z_STREAM_END:
        stream_->isInMember = false;
        break;
      case Z_MEM_ERROR:
        throw std::bad_alloc();
      default:
        throw std::runtime_error("the compressed data is damaged");
    }
  }
  return room - zlib.avail_out;
}

}  // namespace tcamshow
