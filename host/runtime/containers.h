// The host's containers, as the engine uses them: plain standard containers
// under the host's names. No iteration order of VXStringHashTable is relied on.
#pragma once

#include <list>
#include <unordered_map>
#include <vector>

#include "host/runtime/string.h"

template <typename T>
using VXVector = std::vector<T>;
template <typename T>
using VXList = std::list<T>;
template <typename T>
using VXStringHashTable = std::unordered_map<String, T>;
