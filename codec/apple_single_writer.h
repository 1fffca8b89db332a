// Writing AppleSingle files.
#ifndef VEL_CODEC_APPLE_SINGLE_WRITER_H
#define VEL_CODEC_APPLE_SINGLE_WRITER_H

#include "codec/binhex_header.h"

namespace vel {

// One file on its way: start, the data fork, the resource fork, finish. Each is false when a write fails.
class AppleSingleWriter {
  public:
    explicit AppleSingleWriter(int handle) : handle_(handle) {}

    // Leaves room for the header.
    bool start();

    bool add_data(Bytes bytes) { return add(bytes, data_length_); }
    bool add_resource(Bytes bytes) { return add(bytes, resource_length_); }

    // Writes name and Finder information, and the header now that all lengths are known.
    bool finish(const tagBinhex_Header& header);

  private:
    bool add(Bytes bytes, uint32_t& length);
    bool write_header(uint32_t name_length);

    int handle_;
    uint32_t data_length_ = 0;
    uint32_t resource_length_ = 0;
};

}  // namespace vel

// What SplitBinHexForks hands the forks to.
bool ASDataForkCallback(vel::AppleSingleWriter& file, vel::Bytes bytes);
bool ASResourceForkCallback(vel::AppleSingleWriter& file, vel::Bytes bytes);

#endif
