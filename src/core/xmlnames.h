#pragma once

namespace kst {

/// Whether an XML name is the wanted one. For names of a few letters, in documents of tens of thousands of
/// elements, quicker than a call of the library.
inline bool sameName(const char* name, const char* wanted) {
    while (*name == *wanted && *name != '\0') {
        ++name;
        ++wanted;
    }
    return *name == *wanted;
}

} // namespace kst
