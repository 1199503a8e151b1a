#include "frame/exception_translation.h"

#include <exception>
#include <new>

namespace studystats::core {

Dvo::DvoResult translateCurrentException() {
  const auto action = Dvo::LastDescription::Action(0);
  try {
    throw;
  } catch (const Dvo::DvoResult& result) {
    return result;
  } catch (unsigned int hr) {
    return Dvo::DvoResult::StandardDescription(hr);
  } catch (const std::bad_alloc& error) {
    return Dvo::DvoResult(E_OUTOFMEMORY, error.what(), action);
  } catch (const std::exception& error) {
    return Dvo::DvoResult(E_FAIL, error.what(), action);
  } catch (...) {
    Dvo::DiagnoseEntryToGenericCatch();
    return Dvo::DvoResult(E_FAIL, "Internal Error", action);
  }
}

}  // namespace studystats::core
