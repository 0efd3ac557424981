#include "Mutator.h"

using rapidjson::SizeType;
using rapidjson::Value;

namespace {

/** Values at which something ends, or begins to be something else. */
constexpr const char* edges[] = { "null", "true", "false", "0", "-1", "1", "2", "3", "4", "5", "6", "7", "8",
   "9", "20", "48", "63", "64", "67", "68", "72", "127", "128", "129", "200", "255", "256", "257", "320",
   "8421504", "8421505", "2147483647", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296",
   "-129", "127.5", "127.75", "1.0", "1.5", "1e3", "1e10", "1e39", "1e300", "1e-40", "1e-300", "-0.0",
   "18446744073709551616", R"("")", R"("0")", R"("1")", R"("7")", R"("-1")", R"("+5")", R"(" 5")", R"("5 ")",
   R"("007")", R"("12x")", R"("0x10")", R"("1.5")", R"("256")", R"("2147483648")", R"("99999999999")",
   R"("1e39")", R"("nan")", R"("inf")", R"("true")", R"("True")", R"("a/b")", R"("../a")", R"("CpuCpld")",
   R"("SimHam")", R"("QuillonSmbus")", R"("H")", R"("I2C")", R"("LinuxFs")", R"("SCD")", R"("PLM")",
   R"("sfp")", R"("sfp+")", R"("qsfp")", R"("Dummy")", R"("GpioDriver")", R"("PCT2075")", R"("EMC2305")",
   R"("SelvaneXcvr")", R"("SelvanePortLed")", R"("SelvaneSystemLed")", R"("BCM59121")", R"("BCM59122")",
   R"("psu")", R"("gpio")", R"("fan")", R"("led")", R"("slot")", R"("system")", "[]", "{}", "[ 1 ]",
   R"({ "address": 72 })", R"([ { "uid": 1 } ])", R"([ { "id": 9 } ])", R"([ { "did": 1 } ])" };

/** Keys that mean something somewhere. */
constexpr const char* keys[] = { "uid", "did", "driver", "address", "addrSize", "accel", "busTimeout",
   "writeNoStopReadCurrent", "isMultiDevice", "multiDeviceArgs", "provideHam", "driverArgs", "name", "label",
   "components", "devices", "muxes", "busses", "accelerators", "simulated", "pci", "id", "ham", "type",
   "args", "prop", "registerOffset", "firmwarePath", "firmwareDownloadSize", "resetReg", "outOfResetVal",
   "mpssValueZero", "register", "bitpos", "numPorts", "numAtPorts", "alert", "$schema" };

} // namespace

Value& Mutator::Spot::value() const {
   auto place = static_cast<SizeType>( index );
   return parent->IsArray() ? ( *parent )[place] : ( parent->MemberBegin() + place )->value;
}

std::string Mutator::Spot::key() const {
   return parent->IsObject() ? ( parent->MemberBegin() + static_cast<SizeType>( index ) )->name.GetString()
                             : "";
}

void Mutator::collect( Value& value, std::vector<Spot>& spots ) {
   auto count = value.IsArray() ? value.Size() : value.IsObject() ? value.MemberCount() : 0;
   for ( SizeType i = 0; i < count; ++i ) {
      spots.push_back( { &value, i } );
      collect( spots.back().value(), spots );
   }
}

Value Mutator::edge() {
   rapidjson::Document value( memory_ );
   value.Parse( edges[below( std::size( edges ) )] );
   return Value( value, *memory_ );
}

void Mutator::mutate( rapidjson::Document& document ) {
   memory_ = &document.GetAllocator();
   std::vector<Spot> spots;
   collect( document, spots );
   if ( spots.empty() || below( 500 ) == 0 ) {
      document.CopyFrom( edge(), *memory_ );
      return;
   }
   auto spot = spots[below( spots.size() )];
   auto& value = spot.value();
   switch ( below( 12 ) ) {
   case 0:
   case 1:
      return drop( spot );
   case 2:
      return repeat( spot );
   case 3:
      return rename( spot );
   case 4:
      return insertKey( value.IsObject() ? value : *spot.parent );
   case 5:
      return convert( value );
   case 6:
      return step( value );
   case 7:
      return wrap( value );
   case 8:
   case 9:
      return takeFromNamesake( spot, spots );
   default:
      value = edge();
   }
}

void Mutator::drop( const Spot& spot ) {
   auto place = static_cast<SizeType>( spot.index );
   if ( spot.parent->IsArray() ) {
      spot.parent->Erase( spot.parent->Begin() + place );
   } else {
      spot.parent->EraseMember( spot.parent->MemberBegin() + place );
   }
}

void Mutator::repeat( const Spot& spot ) {
   Value copy( spot.value(), *memory_ );
   if ( spot.parent->IsArray() ) {
      spot.parent->PushBack( copy, *memory_ );
   } else {
      Value name( spot.key().c_str(), *memory_ );
      spot.parent->AddMember( name, copy, *memory_ );
   }
}

void Mutator::rename( const Spot& spot ) {
   if ( spot.parent->IsObject() ) {
      auto name = below( 2 ) ? spot.key() + "x" : std::string( keys[below( std::size( keys ) )] );
      ( spot.parent->MemberBegin() + static_cast<SizeType>( spot.index ) )
         ->name.SetString( name.c_str(), *memory_ );
   }
}

void Mutator::insertKey( Value& object ) {
   auto key = keys[below( std::size( keys ) )];
   if ( object.IsObject() && !object.HasMember( key ) ) {
      object.AddMember( rapidjson::StringRef( key ), edge(), *memory_ );
   }
}

/** Another type with the same text. */
void Mutator::convert( Value& value ) {
   if ( value.IsInt() ) {
      value.SetString( std::to_string( value.GetInt() ).c_str(), *memory_ );
   } else if ( value.IsBool() ) {
      value.SetString( value.GetBool() ? "true" : "false", *memory_ );
   } else if ( value.IsString() ) {
      value.SetInt( atoi( value.GetString() ) );
   }
}

void Mutator::step( Value& value ) {
   if ( value.IsInt() ) {
      value.SetInt64( int64_t { value.GetInt() } + ( below( 2 ) ? 1 : -1 ) * ( below( 3 ) ? 1 : 256 ) );
   } else if ( value.IsBool() ) {
      value.SetBool( !value.GetBool() );
   } else {
      value = edge();
   }
}

void Mutator::wrap( Value& value ) {
   Value inner( value, *memory_ );
   if ( below( 2 ) ) {
      value.SetArray().PushBack( inner, *memory_ );
   } else {
      value.SetObject().AddMember(
         rapidjson::StringRef( keys[below( std::size( keys ) )] ), inner, *memory_ );
   }
}

/** The value that stands under the same key elsewhere. */
void Mutator::takeFromNamesake( const Spot& spot, const std::vector<Spot>& spots ) {
   std::vector<Spot> others;
   for ( auto& other : spots ) {
      if ( other.key() == spot.key() && other.parent != spot.parent ) {
         others.push_back( other );
      }
   }
   if ( !others.empty() ) {
      Value copy( others[below( others.size() )].value(), *memory_ );
      spot.value() = copy;
   }
}
