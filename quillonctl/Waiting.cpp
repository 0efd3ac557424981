#include "Waiting.h"

#include <fmt/format.h>

std::string Waiting::text( size_t object, const Step* step ) {
   if ( object >= objects_.size() || objects_[object]->kind->steps.empty() ) {
      return "";
   }
   auto& entry = *objects_[object];
   auto text = objects_.size() > 1 ? fmt::format( "{}, {} of {}", entry.name, object + 1, objects_.size() )
                                   : entry.name;
   if ( step != step_ ) {
      step_ = step;
      since_ = Clock::now();
   }
   if ( !step ) {
      return text;
   }
   auto seconds = std::chrono::duration_cast<std::chrono::seconds>( Clock::now() - since_ ).count();
   return fmt::format( "{}: {}, {} of {} s", text, step->words, seconds, step->seconds );
}
