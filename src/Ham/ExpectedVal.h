#ifndef HAM_EXPECTED_VAL_H
#define HAM_EXPECTED_VAL_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace Utils {

/** A register's starting value and width in simulation: a number or a text. */
class ExpectedVal {
public:
   /** @param bytes width of the register */
   ExpectedVal( uint64_t number, size_t bytes );
   /** @param text as long as the register is wide */
   explicit ExpectedVal( const std::string& text );
   /** A copy takes what counts, the number or the text, and keeps its own other field. */
   ExpectedVal( const ExpectedVal& other );
   ExpectedVal& operator=( const ExpectedVal& other );
   virtual ~ExpectedVal() = default;

   const std::string& valStr() const { return valStr_; }

   uint64_t val = 0;

private:
   std::string valStr_;

public:
   /** Bytes of a number, characters of a text. */
   size_t size = 0;
   bool isNumber = true;
};

} // namespace Utils

#endif
