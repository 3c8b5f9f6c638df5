#pragma once

#include <locale>
#include <string>

namespace orbisk {

/// The shortest text that the scene-graph library's own number reader (`osg::asciiToDouble`, which
/// multiplies and adds digit by digit and so errs in the last places) turns into this very number;
/// where there is none among the texts that are tried, one it reads as a neighbour. What is not
/// finite stays so.
std::string exactText(double number);

/// The facet that makes a stream write every floating-point number by `exactText`, whatever the
/// stream's precision.
class ExactNumbers : public std::num_put<char> {
protected:
    iter_type do_put(iter_type out, std::ios_base& stream, char_type fill,
                     double number) const override;
};

} // namespace orbisk
