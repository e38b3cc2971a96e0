// Names that Foundation gives to other frameworks' types. Included at the end of <Foundation/Foundation.h>.
#pragma once

typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;
