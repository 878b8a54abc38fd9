// The host entry points the functions call by late binding. Including this header gives the
// translation unit its own slots and registers them (see dynfunc.hpp).
#pragma once

#include "wavex/dynfunc.hpp"
#include "wavex/exceptions.hpp"
#include "wavex/messages.hpp"

namespace wavex {

class ScpInterface;

namespace {

[[maybe_unused]] YRef<MessageHandler> (*dyn_GetDefaultMessageHandler)() = []() -> YRef<MessageHandler> {
    throw DynFuncException("dyn_GetDefaultMessageHandler");
};
[[maybe_unused]] ScpInterface* (*dyn_GetScpInterface)() = []() -> ScpInterface* {
    throw DynFuncException("dyn_GetScpInterface");
};
[[maybe_unused]] const char* (*dyn_IdentifyBinary)() = []() -> const char* {
    throw DynFuncException("dyn_IdentifyBinary");
};

const RegisterDynFuncCall dynRegisterDefaultMessageHandler(&dyn_GetDefaultMessageHandler,
    "dyn_GetDefaultMessageHandler", false, true, __FILE__, __LINE__);
const RegisterDynFuncCall dynRegisterScpInterface(&dyn_GetScpInterface, "dyn_GetScpInterface",
    false, true, __FILE__, __LINE__);
const RegisterDynFuncCall dynRegisterIdentifyBinary(&dyn_IdentifyBinary, "dyn_IdentifyBinary",
    false, true, __FILE__, __LINE__);

}  // namespace
}  // namespace wavex
