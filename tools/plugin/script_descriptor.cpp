#include "plugin/script_descriptor.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "host/script_keys.h"
#include "plugin/memory_handles.h"

// What the interface's tokens point at; their names are the interface's own.
struct PIReadDescriptorToken {
  std::vector<orbel::ScriptValue> values;
  DescriptorKeyID* expectedKeys;
  std::size_t next;  // the value in hand is the one before
};
struct PIWriteDescriptorToken {
  std::vector<orbel::ScriptValue> values;
};

namespace orbel {

namespace {

std::vector<ScriptValue> valuesOf(PIDescriptorHandle descriptor) {
  const auto bytes = static_cast<std::size_t>(handleProcedures().getSizeProc(descriptor));
  std::vector<ScriptValue> values(bytes / sizeof(ScriptValue));
  if (!values.empty()) std::memcpy(values.data(), *descriptor, values.size() * sizeof(ScriptValue));
  return values;
}

PIReadDescriptor openRead(PIDescriptorHandle descriptor, DescriptorKeyID* expectedKeys) {
  if (descriptor == nullptr) return nullptr;
  return std::make_unique<PIReadDescriptorToken>(PIReadDescriptorToken{valuesOf(descriptor), expectedKeys, 0})
      .release();
}

OSErr closeRead(PIReadDescriptor token) {
  const std::unique_ptr<PIReadDescriptorToken> owned(token);
  if (owned == nullptr) return paramErr;
  if (owned->expectedKeys == nullptr) return noErr;
  for (const DescriptorKeyID* key = owned->expectedKeys; *key != 0; ++key) {
    if (*key != typeNull) return errMissingParameter;
  }
  return noErr;
}

Boolean getKey(PIReadDescriptor token, DescriptorKeyID* key, DescriptorTypeID* type, std::int32_t* flags) {
  if (token == nullptr || token->next == token->values.size()) return 0;
  const ScriptValue& value = token->values[token->next++];
  *key = value.key;
  *type = value.type;
  *flags = actionSimpleParameter;
  // A key that has been handed out is struck from the plug-in's own list, as hosts do.
  for (DescriptorKeyID* expected = token->expectedKeys; expected != nullptr && *expected != 0; ++expected) {
    if (*expected == value.key) *expected = typeNull;
  }
  return 1;
}

template <typename T, DescriptorTypeID type>
OSErr get(PIReadDescriptor token, T* target) {
  if (token == nullptr || token->next == 0 || token->values[token->next - 1].type != type) return paramErr;
  *target = static_cast<T>(token->values[token->next - 1].number);
  return noErr;
}

PIWriteDescriptor openWrite() { return std::make_unique<PIWriteDescriptorToken>().release(); }

OSErr closeWrite(PIWriteDescriptor token, PIDescriptorHandle* descriptor) {
  const std::unique_ptr<PIWriteDescriptorToken> owned(token);
  if (owned == nullptr) return paramErr;
  *descriptor = makeDescriptor(owned->values);
  return *descriptor == nullptr ? memFullErr : noErr;
}

OSErr put(PIWriteDescriptor token, const ScriptValue& value) {
  if (token == nullptr) return paramErr;
  token->values.push_back(value);
  return noErr;
}
OSErr putFloat(PIWriteDescriptor token, DescriptorKeyID key, const double* value) {
  return put(token, {key, typeFloat, *value});
}
OSErr putBoolean(PIWriteDescriptor token, DescriptorKeyID key, Boolean value) {
  return put(token, {key, typeBoolean, value != 0 ? 1.0 : 0.0});
}
OSErr putInteger(PIWriteDescriptor token, DescriptorKeyID key, std::int32_t value) {
  return put(token, {key, typeInteger, static_cast<double>(value)});
}

// The calls for types that no descriptor of ours holds.
template <typename... Arguments>
OSErr refuse(Arguments...) {
  return paramErr;
}

ReadDescriptorProcs readTable = {0,
                                 18,
                                 openRead,
                                 closeRead,
                                 getKey,
                                 get<std::int32_t, typeInteger>,
                                 get<double, typeFloat>,
                                 refuse,
                                 get<Boolean, typeBoolean>,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse,
                                 refuse};

WriteDescriptorProcs writeTable = {0,      16,         openWrite, closeWrite, putInteger, putFloat,
                                   refuse, putBoolean, refuse,    refuse,     refuse,     refuse,
                                   refuse, refuse,     refuse,    refuse,     refuse,     refuse};

}  // namespace

PIDescriptorHandle makeDescriptor(const std::vector<ScriptValue>& values) {
  const std::size_t bytes = values.size() * sizeof(ScriptValue);
  Handle handle = handleProcedures().newProc(static_cast<std::int32_t>(bytes));
  if (handle != nullptr && bytes != 0) std::memcpy(*handle, values.data(), bytes);
  return handle;
}

ReadDescriptorProcs& readProcedures() { return readTable; }
WriteDescriptorProcs& writeProcedures() { return writeTable; }

std::vector<ScriptValue> scriptOf(const orbel_settings& settings) {
  std::vector<ScriptValue> script;
  for (const ScriptKey& key : scriptKeys) {
    double value = 0;
    orbel_settings_get(&settings, nameOf(key).text, &value);
    script.push_back({key.code, descriptorType(key.kind), value});
  }
  return script;
}

}  // namespace orbel
