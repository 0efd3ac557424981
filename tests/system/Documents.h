#ifndef DOCUMENTS_H
#define DOCUMENTS_H

#include "SystemTest.h"

/** The two documents of a board. */
struct Documents {
   std::string topology;
   std::string objects;
};

/** A whole topology document, with no objects. */
Documents topology( const std::string& text );
/** A medium in line 3 of a topology that has the device "CpuCpld" with the did 9. */
Documents medium( const std::string& text );
/** Devices from line 4 on, on a bus of such a topology. */
Documents device( const std::string& text );
/** A whole objects document. */
Documents objects( const std::string& text );
/** Objects from line 2 on. */
Documents object( const std::string& text );

/** Documents that must be refused. */
struct Row {
   std::string name;
   Documents documents;
   /** All that is wrong, as "file:line:column: place: reason". */
   std::vector<std::string> findings;
};

std::ostream& operator<<( std::ostream& stream, const Row& row );

class DocumentsTest : public SystemTest {
protected:
   /** Status of a board of these documents, in simulation. */
   Result statusOf( const Documents& documents, const Process::Arguments& more = {} ) const;
};

class WrongDocument : public DocumentsTest, public ::testing::WithParamInterface<Row> {};

std::string nameOf( const ::testing::TestParamInfo<Row>& test );

#endif
