/* Shared by hosts and plug-ins: the OpenGL 1.1 functions that a host exports, and their constants. C11 and C++. */
#ifndef TOVU_HOST_OPENGL_H
#define TOVU_HOST_OPENGL_H

/*
 * Each is OpenGL's own function behind the prefix `ormixGL_`, with OpenGL's own prototype; the types are written out
 * so that no OpenGL header is needed, and agree with one that is, included before or after this one.
 *
 * Callable inside PLUGIN_RENDER_OPENGL, where the host's context is current; `ormixGL_glTexCoordPointer`, which only
 * notes an address, in PLUGIN_INIT_FUNCTION too. The host keeps none of the plug-in's arrays: OpenGL reads what the
 * three pointer calls name at the next `ormixGL_glDrawArrays`, so it must lie there until then.
 *
 * As a pass begins, GL_PROJECTION holds projection × view and GL_MODELVIEW the container's transformation alone: what
 * is drawn lies in container units, and in world units once the identity is loaded. Texture coordinates run
 * from 0 to 32767 across the texture. Texture, material, blend and alpha-test functions are the host's. Match every
 * push by a pop.
 */

#ifndef GL_POINTS
/* primitives: glBegin, glDrawArrays */
#define GL_POINTS 0x0000
#define GL_LINES 0x0001
#define GL_LINE_LOOP 0x0002
#define GL_LINE_STRIP 0x0003
#define GL_TRIANGLES 0x0004
#define GL_TRIANGLE_STRIP 0x0005
#define GL_TRIANGLE_FAN 0x0006
#define GL_QUADS 0x0007
#define GL_QUAD_STRIP 0x0008
#define GL_POLYGON 0x0009
/* flags: glDepthMask */
#define GL_FALSE 0
#define GL_TRUE 1
/* element types: glVertexPointer, glColorPointer, glTexCoordPointer */
#define GL_BYTE 0x1400
#define GL_UNSIGNED_BYTE 0x1401
#define GL_SHORT 0x1402
#define GL_UNSIGNED_SHORT 0x1403
#define GL_INT 0x1404
#define GL_UNSIGNED_INT 0x1405
#define GL_FLOAT 0x1406
#define GL_DOUBLE 0x140A
/* capabilities: glEnable, glDisable */
#define GL_POINT_SMOOTH 0x0B10
#define GL_LINE_SMOOTH 0x0B20
#define GL_LINE_STIPPLE 0x0B24
#define GL_CULL_FACE 0x0B44
#define GL_LIGHTING 0x0B50
#define GL_COLOR_MATERIAL 0x0B57
#define GL_FOG 0x0B60
#define GL_DEPTH_TEST 0x0B71
#define GL_STENCIL_TEST 0x0B90
#define GL_NORMALIZE 0x0BA1
#define GL_ALPHA_TEST 0x0BC0
#define GL_DITHER 0x0BD0
#define GL_BLEND 0x0BE2
#define GL_SCISSOR_TEST 0x0C11
#define GL_TEXTURE_1D 0x0DE0
#define GL_TEXTURE_2D 0x0DE1
/* hints: glHint */
#define GL_PERSPECTIVE_CORRECTION_HINT 0x0C50
#define GL_POINT_SMOOTH_HINT 0x0C51
#define GL_LINE_SMOOTH_HINT 0x0C52
#define GL_POLYGON_SMOOTH_HINT 0x0C53
#define GL_FOG_HINT 0x0C54
#define GL_DONT_CARE 0x1100
#define GL_FASTEST 0x1101
#define GL_NICEST 0x1102
/* matrix modes: glMatrixMode */
#define GL_MODELVIEW 0x1700
#define GL_PROJECTION 0x1701
#define GL_TEXTURE 0x1702
/* client arrays: glEnableClientState, glDisableClientState */
#define GL_VERTEX_ARRAY 0x8074
#define GL_NORMAL_ARRAY 0x8075
#define GL_COLOR_ARRAY 0x8076
#define GL_INDEX_ARRAY 0x8077
#define GL_TEXTURE_COORD_ARRAY 0x8078
#define GL_EDGE_FLAG_ARRAY 0x8079
/* pixel formats: _api__get_image_format */
#define GL_ALPHA 0x1906
#define GL_RGB 0x1907
#define GL_RGBA 0x1908
#define GL_LUMINANCE 0x1909
#define GL_LUMINANCE_ALPHA 0x190A
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Begins primitives of the kind `mode`, GL_POINTS to GL_POLYGON: the corners up to glEnd. */
void ormixGL_glBegin(unsigned int mode);
/** Ends what glBegin began. Between the two only the next five are allowed. */
void ormixGL_glEnd(void);
/** A corner, in the coordinates that GL_MODELVIEW starts from. */
void ormixGL_glVertex3f(float x, float y, float z);
/** A corner from three floats, read during the call. */
void ormixGL_glVertex3fv(const float* xyz);
/** Colour of the corners to come, components 0 to 1; alpha 1 is opaque. */
void ormixGL_glColor4f(float red, float green, float blue, float alpha);
/** The same with components 0 to 255. */
void ormixGL_glColor4ub(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
/** Texture coordinates of the corners to come, 0 to 32767 across the texture. */
void ormixGL_glTexCoord2s(short s, short t);
/**
 * Corners for glDrawArrays: `size` elements of `type` each, `stride` bytes from one to the next, 0 where they are
 * packed. The array stays the plug-in's.
 */
void ormixGL_glVertexPointer(int size, unsigned int type, int stride, const void* pointer);
/** Colours, likewise; those of whole-number types span their range. */
void ormixGL_glColorPointer(int size, unsigned int type, int stride, const void* pointer);
/** Texture coordinates, likewise; not scaled by their type. */
void ormixGL_glTexCoordPointer(int size, unsigned int type, int stride, const void* pointer);
/** Draws `count` corners from the enabled arrays, the 0-based `first` one first. Reads the arrays during the call. */
void ormixGL_glDrawArrays(unsigned int mode, int first, int count);
/** Has glDrawArrays use one of the client arrays, GL_VERTEX_ARRAY to GL_EDGE_FLAG_ARRAY. */
void ormixGL_glEnableClientState(unsigned int array);
/** Has it leave that array alone. */
void ormixGL_glDisableClientState(unsigned int array);
/** Switches a capability on. */
void ormixGL_glEnable(unsigned int capability);
/** Switches a capability off. */
void ormixGL_glDisable(unsigned int capability);
/** Whether what is drawn writes its depth: GL_TRUE or GL_FALSE. */
void ormixGL_glDepthMask(unsigned char flag);
/** Speed or looks, GL_FASTEST, GL_NICEST or GL_DONT_CARE, for the target, one of the hints. */
void ormixGL_glHint(unsigned int target, unsigned int mode);
/** Width of lines, pixels. */
void ormixGL_glLineWidth(float width);
/** Size of points, pixels. */
void ormixGL_glPointSize(float size);
/** Which matrix the next five work on: GL_MODELVIEW, GL_PROJECTION or GL_TEXTURE. */
void ormixGL_glMatrixMode(unsigned int mode);
/** The matrix becomes the identity. */
void ormixGL_glLoadIdentity(void);
/** Keeps a copy of the matrix, to come back to. */
void ormixGL_glPushMatrix(void);
/** Comes back to the copy kept last. */
void ormixGL_glPopMatrix(void);
/** Multiplies the matrix on its right by 16 floats in column order, read during the call. */
void ormixGL_glMultMatrixf(const float* matrix);
/** Multiplies the matrix on its right by a displacement, in the units of what is drawn. */
void ormixGL_glTranslatef(float x, float y, float z);

#ifdef __cplusplus
}
#endif

#endif
