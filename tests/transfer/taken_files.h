/// How another program takes what a data object carries.
#pragma once

#include <objidl.h>

#include <string>

namespace transfer_test {

/// The descriptors with the content of each file, read through its stream in steps: for each record
/// "name attributes size sum|", the sum only for files. A failure ends it with "failed" and its
/// code.
std::string take_files(IDataObject& source);

/// The same line for bytes that a test knows.
std::string told_of(const std::wstring& name, const void* content, std::size_t size);
std::string told_of(const std::wstring& directory_name);

} // namespace transfer_test
