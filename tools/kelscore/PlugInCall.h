#pragma once

#include <exception>
#include <new>
#include <string>

#include "tools/kelscore/Failure.h"

namespace kelscore {

/// Makes a call that may reach a plug-in. False, and the reason, when it throws: a plug-in may throw whatever it likes.
template <typename Call>
[[nodiscard]] bool CallPlugIn(const Call& call, std::string& reason) {
  try {
    call();
    return true;
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    reason = std::string("the plug-in threw an exception: ") + error.what();
  } catch (...) {
    reason = "the plug-in threw an exception";
  }
  return false;
}

}  // namespace kelscore
