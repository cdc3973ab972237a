// VXRegEx: regular expressions (Perl syntax) over byte strings.
//
// Matching is a search: an expression matches when it matches somewhere in
// the text. Whole-text and prefix matching are written into the expression
// itself with ^ and $, as the engine's name patterns are. A compiled Pattern
// is immutable and may be shared by any number of threads; each match (and
// each Matcher) has match state of its own.
#pragma once

#include "host/runtime/ref_counted.h"
#include "host/runtime/string.h"
#include "host/runtime/xcode.h"

// The compiled form and match state of the expression library, kept opaque.
struct pcre2_real_code_8;
struct pcre2_real_match_data_8;

class VXRegEx {
public:
    class Matcher;

    class Pattern : public VX::RefCounted {
    public:
        // True when the expression matches somewhere in `text`.
        bool match(const String& text) const;
        // A matcher over a copy of `text`, or null when no match state could
        // be made.
        VXPtr<Matcher> createMatcher(const String& text) const;
        // The expression's text, as compiled.
        const String& getText() const { return text_; }
        // The number of capturing groups (capture 0, the whole match, aside).
        unsigned getCaptureCount() const;

    protected:
        ~Pattern() override;

    private:
        friend class VXRegEx;
        friend class Matcher;
        Pattern(const String& text, pcre2_real_code_8* code) : text_(text), code_(code) {}

        const String text_;
        pcre2_real_code_8* const code_;  // owned
    };

    class Matcher : public VX::RefCounted {
    public:
        // Finds the next match: the first call searches from the start of the
        // text, each further call after the end of the previous match. False
        // when there is none (further captures then fail).
        bool match();
        // The text of capture `index` of the current match (0: the whole
        // match). Fails when there is no current match, the index is beyond
        // the expression's groups, or the group took no part in the match.
        XCode getCapture(unsigned index, String& out) const;
        // The same, giving the empty text on failure.
        String getCapture(unsigned index) const;

    protected:
        ~Matcher() override;

    private:
        friend class Pattern;
        Matcher(const Pattern& pattern, const String& text, pcre2_real_match_data_8* data);

        VXPtr<const Pattern> pattern_;
        const String text_;
        pcre2_real_match_data_8* const data_;  // owned
        size_t next_ = 0;                      // where the next search starts
        bool matched_ = false;                 // the match data holds a current match
        bool exhausted_ = false;               // no further match can follow
    };

    // Compiles `text`; null when it is not a valid expression.
    static VXPtr<Pattern> COMPILE_EXPRESSION(const String& text);
};
