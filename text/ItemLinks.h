#pragma once

#include "platform/text/MutableAttributedString.h"

namespace tavlin {

/// -removeLinkAttributesForMe  Removes all links.
void removeLinkAttributesForMe(ns::MutableAttributedString& text);

/// +linkAttributesForMeWithURL:  What marks a link: the URL under the link attribute and nothing
/// else, since the view has a link style of its own.
ns::Dictionary linkAttributesForMeWithURL(const ns::Value& url);

/// -checkURLForMe:  Whether a URL (a record of class NSURL) has a scheme, its own or that of the
/// URL it is relative to; false for none.
bool checkURLForMe(const ns::Value& url);

/// -appendLinkForMe  Marks the links that ns::LinkDetector finds in the text; true when there was
/// one.  Links that are marked already stay.  Linear in the text and its runs.
///
/// The attributes are asked of `linkAttributes`: the argument is how a caller with a link style of
/// its own takes the place of a derived class.
bool appendLinkForMe(
    ns::MutableAttributedString& text,
    ns::Dictionary (*linkAttributes)(const ns::Value& url) = linkAttributesForMeWithURL);

}  // namespace tavlin
