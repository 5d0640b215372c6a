// The mail model: the door of this module.
#pragma once

#include "Addresses.h"
#include "Encodings.h"
#include "Header.h"
#include "Mail.h"
#include "MailPart.h"
#include "MailTypes.h"
#include "TextStreamer.h"
