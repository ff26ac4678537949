// Small text files, written whole or not at all.
#pragma once

#include <string>

// Throws Failure when the file is there already, unless it may be replaced, and when it can't be written.
void writeTextFile(const std::string& file, const std::string& text, bool replace);
