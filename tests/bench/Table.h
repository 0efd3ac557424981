#ifndef BENCH_TABLE_H
#define BENCH_TABLE_H

#include <optional>
#include <string>
#include <vector>

/** What was measured, with its unit. */
struct Figure {
   double value;
   std::string text;
};

/** Stands for what a program would have to be there for. */
Figure notInstalled();
Figure inSeconds( double value );
Figure inInstructions( double value );
Figure inBytes( double value );
Figure perSecond( double value );

/** A line of the result. */
struct Row {
   std::string name;
   Figure figure;
   /** The same work done otherwise, or by somebody else. */
   std::optional<Figure> baseline {};
   /** The greatest ratio to the baseline that is good enough; without a baseline, the greatest value. */
   std::optional<double> wanted {};
};

/** Prints the table on standard output, which has nothing else: scripts/bench makes one table of several. */
void printTable( const std::vector<Row>& rows );

#endif
