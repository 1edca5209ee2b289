// How much of what could be tried is tried: with QREL_TEST_THOROUGH set in the environment all of it, else the part
// that finds nearly everything in a tenth of the time.
#pragma once

#include <cstdlib>

namespace qrel {

inline bool thorough() { return std::getenv("QREL_TEST_THOROUGH") != nullptr; }

inline int rounds(int all, int usually) { return thorough() ? all : usually; }

// The next of a row of places, from 1 on, of which each can go wrong: each of the first ones, fewer and fewer further
// on.
inline long nextPlace(long place) { return thorough() ? place + 1 : place + 1 + place / 6; }

}  // namespace qrel
