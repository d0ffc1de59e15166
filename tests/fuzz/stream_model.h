/// The stream format read again in the plainest way, and a comparison of the library with it.
#ifndef TESTS_DATA_STREAM_MODEL_H
#define TESTS_DATA_STREAM_MODEL_H

#include <string>
#include <vector>

/// Runs the operations that the bytes of `script` stand for on a reader and on the model, both over
/// `data`. Says where they differed first, or where an item written back made other bytes; empty
/// when all agrees.
std::string differenceFromModel(std::vector<unsigned char> const& script,
                                std::vector<unsigned char> const& data);

#endif
