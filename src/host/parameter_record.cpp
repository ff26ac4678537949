// Default values, descriptor reader and descriptor writer, all three driven by the table of script keys.
#include "host/parameter_record.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "host/host_services.h"

namespace {

// A reader that never ends must not hang the host. No descriptor of 24 keys comes near.
constexpr int mostKeysRead = 10000;

template <typename Value>
Value* field(ParameterRecord* record, const ScriptKey& key) {
  return reinterpret_cast<Value*>(reinterpret_cast<unsigned char*>(record) + key.offset);
}

void setDefaults(ParameterRecord* record) {
  for (const ScriptKey& key : scriptKeys) {
    switch (key.kind) {
      case ScriptKind::Float:
        *field<double>(record, key) = key.fallback;
        break;
      case ScriptKind::Flag:
        *field<std::uint8_t>(record, key) = key.fallback != 0;
        break;
      case ScriptKind::Integer:
        *field<std::int32_t>(record, key) = static_cast<std::int32_t>(key.fallback);
        break;
    }
  }
}

void readValue(const ReadDescriptorProcs* procs, PIReadDescriptor token, const ScriptKey& key,
               ParameterRecord* record) {
  switch (key.kind) {
    case ScriptKind::Float:
      procs->getFloatProc(token, field<double>(record, key));
      break;
    case ScriptKind::Flag:
      procs->getBooleanProc(token, field<Boolean>(record, key));
      break;
    case ScriptKind::Integer:
      procs->getIntegerProc(token, field<std::int32_t>(record, key));
      break;
  }
}

void writeValue(const WriteDescriptorProcs* procs, PIWriteDescriptor token, const ScriptKey& key,
                ParameterRecord* record) {
  switch (key.kind) {
    case ScriptKind::Float:
      procs->putFloatProc(token, key.code, field<double>(record, key));
      break;
    case ScriptKind::Flag:
      procs->putBooleanProc(token, key.code, *field<Boolean>(record, key));
      break;
    case ScriptKind::Integer:
      procs->putIntegerProc(token, key.code, *field<std::int32_t>(record, key));
      break;
  }
}

void readKeys(Globals* globals, const ReadDescriptorProcs* procs, PIReadDescriptor token) {
  for (int i = 0; i < mostKeysRead; ++i) {
    DescriptorKeyID code = 0;
    DescriptorTypeID type = 0;
    std::int32_t flags = 0;
    if (procs->getKeyProc(token, &code, &type, &flags) == 0) return;
    const auto* const key =
        std::find_if(std::begin(scriptKeys), std::end(scriptKeys), [&](const ScriptKey& k) { return k.code == code; });
    ParameterRecord* record = CurrentParameters(globals);
    if (key != std::end(scriptKeys) && record != nullptr) readValue(procs, token, *key, record);
  }
}

OSErr readDescriptor(Globals* globals, PIDescriptorParameters* params) {
  if (params->descriptor == nullptr) return noErr;
  // Not constant, and alive until the reader is closed: the host strikes out the keys that it has handed out.
  std::array<DescriptorKeyID, expectedScriptKeyCount + 1> expected = {};
  std::transform(std::begin(expectedScriptKeys), std::end(expectedScriptKeys), expected.begin(),
                 [](int position) { return scriptKeys[position].code; });
  const ReadDescriptorProcs* procs = params->readDescriptorProcs;
  PIReadDescriptor token = procs->openReadDescriptorProc(params->descriptor, expected.data());
  if (token == nullptr) return noErr;
  readKeys(globals, procs, token);
  const OSErr code = HostCloseReader(params, globals->filterRecord->handleProcs, &token);
  // A script may leave out what it doesn't want to change.
  if (code != noErr && code != errMissingParameter) *globals->result = code;
  return code;
}

}  // namespace

ParameterRecord* CurrentParameters(const Globals* globals) {
  Handle handle = globals->filterRecord->parameters;
  return handle == nullptr ? nullptr : reinterpret_cast<ParameterRecord*>(*handle);
}

void ValidateParameters(Globals* globals) {
  FilterRecord* host = globals->filterRecord;
  const bool isNew = host->parameters == nullptr;
  if (isNew) host->parameters = HostNewHandle(host->handleProcs, sizeof(ParameterRecord));
  if (ParameterRecord* record = CurrentParameters(globals); record == nullptr) {
    *globals->result = memFullErr;
    if (isNew && host->parameters != nullptr) {
      HostDisposeHandle(host->handleProcs, host->parameters);
      host->parameters = nullptr;
    }
  } else if (isNew) {
    setDefaults(record);
  }
}

OSErr ReadScriptParams(Globals* globals) {
  PIDescriptorParameters* params = globals->filterRecord->descriptorParameters;
  if (!HostDescriptorAvailable(params, nullptr)) return noErr;
  const OSErr code = readDescriptor(globals, params);
  if (ParameterRecord* record = CurrentParameters(globals); record != nullptr) {
    record->showDialog = HostPlayDialog(params) ? 1 : 0;
  }
  return code;
}

OSErr WriteScriptParams(Globals* globals) {
  PIDescriptorParameters* params = globals->filterRecord->descriptorParameters;
  if (CurrentParameters(globals) == nullptr || !HostDescriptorAvailable(params, nullptr)) return noErr;
  const WriteDescriptorProcs* procs = params->writeDescriptorProcs;
  PIWriteDescriptor token = procs->openWriteDescriptorProc();
  if (token == nullptr) return noErr;
  for (const ScriptKey& key : scriptKeys) {
    ParameterRecord* record = CurrentParameters(globals);
    if (record != nullptr) writeValue(procs, token, key, record);
  }
  return HostCloseWriter(params, globals->filterRecord->handleProcs, &token);
}
