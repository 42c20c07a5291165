#pragma once

enum giXformIdentityTag { giXformIdentity };
enum giXformInverseTag { giXformInverse };
enum giXformProductTag { giXformProduct };
enum giXformTranslateTag { giXformTranslate };
enum giXformRotateTag { giXformRotate };
enum giXformScaleTag { giXformScale };
enum giXformLocalTag { giXformLocal };
