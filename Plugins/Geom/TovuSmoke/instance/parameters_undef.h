// Ends one expansion of parameters.def, so that the next can give the rows another meaning. Meant to be included often.
#undef PARAM_INT
#undef PARAM_FLOAT
#undef PARAM_BOOL
#undef PARAM_RADIO
#undef PARAM_STRING
#undef PARAM_CONTAINER
#undef PARAM_IMAGE
