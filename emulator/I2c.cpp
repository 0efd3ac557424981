#include "I2c.h"

namespace I2c {

const char* describe( Result result ) {
   switch ( result ) {
   case Result::Ok:
      return "ok";
   case Result::NoAcknowledge:
      return "no acknowledge";
   case Result::BusBusy:
      return "bus busy";
   case Result::ArbitrationLost:
      return "arbitration lost";
   case Result::BadBlock:
      return "bad block length";
   case Result::TimedOut:
      return "timed out";
   case Result::NotPermitted:
      return "not permitted";
   case Result::HeldByDriver:
      return "held by a kernel driver";
   case Result::NotSupported:
      return "not supported by the adapter";
   case Result::NoBus:
      return "no such bus";
   case Result::IoError:
      break;
   }
   return "I/O error";
}

} // namespace I2c
