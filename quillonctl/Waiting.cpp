#include "Waiting.h"

#include <fmt/format.h>

#include <algorithm>

std::string Waiting::text( size_t object, const std::string& line ) {
   if ( object >= objects_.size() || objects_[object]->kind->steps.empty() ) {
      return "";
   }
   auto& entry = *objects_[object];
   auto text = objects_.size() > 1 ? fmt::format( "{}, {} of {}", entry.name, object + 1, objects_.size() )
                                   : entry.name;
   auto& steps = entry.kind->steps;
   auto step = std::find_if(
      steps.begin(), steps.end(), [&]( auto& candidate ) { return line.starts_with( candidate.trace ); } );
   if ( step == steps.end() ) {
      step_ = nullptr;
      return text;
   }
   if ( step_ != &*step ) {
      step_ = &*step;
      since_ = Clock::now();
   }
   auto seconds = std::chrono::duration_cast<std::chrono::seconds>( Clock::now() - since_ ).count();
   return fmt::format( "{}: {}, {} of {} s", text, step->words, seconds, step->seconds );
}
