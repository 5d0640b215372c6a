// The door of the module: text, number-list, HTML-text and file functions, lists, streams, errors.
#pragma once

#include "DateText.h"
#include "Errors.h"
#include "FileNames.h"
#include "FileUtils.h"
#include "HtmlText.h"
#include "NumberList.h"
#include "Streams.h"
#include "StringList.h"
#include "TextBlock.h"
#include "TextUtils.h"
#include "Wildcards.h"
