# What Doxygen reads instead of a public header: the list of result codes as constants with their
# meaning, the results of an operation as a table, a paragraph with a heading for what the class does
# not settle. Deleted operations are left out.
/^#define PORTINGLAYER_RESULT_CODES\(CODE\)/d
/^\/\/\/ Every code once: CODE/,/^\/\/\/ from this list/d
/^\/\/\/ Declares one code/,/^#undef/d
s!^ +CODE\(([A-Z_]+), (-?[0-9]+), "(.*)"\)( \\)?$!/// \3\nconstexpr int \1 = \2;!
s!@return (PERR_[A-Z_]+)!@retval \1!
s!^( *)/// (Threads|Blocks|Children): !\1///\n\1/// @par \2\n\1/// !
/= delete;/d
