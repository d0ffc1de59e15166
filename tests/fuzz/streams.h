/// The stream format read again in the plainest way, and a comparison of the library with it.
#ifndef TESTS_FUZZ_STREAMS_H
#define TESTS_FUZZ_STREAMS_H

#include <string>
#include <vector>

using Bytes = std::vector<unsigned char>;

/// Runs the operations of `script` on a reader and a model of it, writes plain texts back, and says
/// where the two differed first or other bytes were written.
std::string differenceFromModel(Bytes const& script, Bytes stream);

#endif
