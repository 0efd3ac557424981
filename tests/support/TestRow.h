#ifndef TEST_ROW_H
#define TEST_ROW_H

#include <string>

/** A row that one of the library's factory tables has for the length of a test. */
template <typename Table>
class TestRow {
public:
   TestRow( Table& table, const std::string& key, typename Table::mapped_type factory )
      : table_( table ), key_( key ) {
      table_.emplace( key, factory );
   }

   ~TestRow() { table_.erase( key_ ); }

   TestRow( const TestRow& ) = delete;
   TestRow& operator=( const TestRow& ) = delete;

private:
   Table& table_;
   std::string key_;
};

#endif
